#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "types/usrpropkey.h"

namespace qve {

class usrprops;
class usrtype;

/// Chooses by the text of one property how a type is named and made. Filled at start-up, read-only afterwards.
class typefactory {
public:
    using namer = std::wstring (*)(const usrprops&);
    using creator = std::unique_ptr<usrtype> (*)(const usrprops&);

    explicit typefactory(usrpropkey key) : m_key(key) {}

    void define(std::wstring value, namer name, creator create);
    bool defines(const std::wstring& value) const { return m_entries.contains(value); }

    /// The canonical name of the type that a property set denotes. Throws QVE_RangeError 40688 without the key, 40689
    /// for a text that was not defined.
    std::wstring nametype(const usrprops& properties) const;
    /// A new type. Throws QVE_RangeError 40686 without the key, 40687 for a text that was not defined.
    std::unique_ptr<usrtype> createtype(const usrprops& properties) const;

private:
    struct entry {
        namer name;
        creator create;
    };
    usrpropkey m_key;
    std::unordered_map<std::wstring, entry> m_entries;
};

}  // namespace qve
