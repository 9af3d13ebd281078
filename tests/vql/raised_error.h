#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "system/VQLException.h"
#include "system/unicode.h"

namespace qve::test {

/// What a statement raised: code, message and, for a fault with a place, line and column; -1, -1 for one without.
struct RaisedError {
    int code = 0;
    std::string text;
    int line = -1;
    int column = -1;
    friend bool operator==(const RaisedError&, const RaisedError&) = default;
    friend std::ostream& operator<<(std::ostream& stream, const RaisedError& error) {
        return stream << error.code << " \"" << error.text << "\" at " << error.line << ":" << error.column;
    }
};

/// Runs `body` and gives what it raised; code 0 when nothing.
template <class Body>
RaisedError Raised(Body body) {
    try {
        body();
    } catch (const VQLParseException& e) {
        return {e.GetErrorCode(), e.GetWhatA(), e.GetPosition().GetLineNo(), e.GetPosition().GetColumnNo()};
    } catch (const VQLException& e) {
        return {e.GetErrorCode(), e.GetWhatA()};
    }
    return {};
}

}  // namespace qve::test
