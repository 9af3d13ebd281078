#pragma once

#include <optional>
#include <string>

namespace qve::cli {

/// A place in a statement, counted from 0: lines, and characters of the line.
struct Place {
    int line = 0;
    int column = 0;
};

/// Finds where in a statement an error lies that the server reported: it sends a number and a text only, so the
/// statement is read again by the language's own rules. Nothing when the error is none of the statement's text.
std::optional<Place> LocateError(const std::string& statement, int status, const std::string& message);

/// The line of the text with the place, and a second line with a caret under the place.
std::string ShowPlace(const std::string& text, Place place);

}  // namespace qve::cli
