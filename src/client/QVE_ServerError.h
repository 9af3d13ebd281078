#pragma once

#include <string>
#include <utility>
#include <vector>

#include "system/QuillonException.h"

namespace qve {

/// An error reply: the status and texts as the server sent them.
class QVE_ServerError : public QVE_Exception {
public:
    QVE_ServerError(int status, std::vector<std::string> texts)
        : QVE_Exception(status, texts.empty() ? std::string() : texts.front()), m_texts(std::move(texts)) {}
    /// In UTF-8; there may be none.
    const std::vector<std::string>& GetTexts() const noexcept { return m_texts; }

private:
    std::vector<std::string> m_texts;
};

}  // namespace qve
