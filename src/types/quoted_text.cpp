#include "types/quoted_text.h"

#include <istream>
#include <ostream>

#include "types/usrtype.h"

namespace qve {
namespace {

constexpr int end_of_input = std::char_traits<char>::eof();

char unescape(int letter) {
    switch (letter) {
        case '0':
            return '\0';
        case 't':
            return '\t';
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        default:
            return static_cast<char>(letter);
    }
}

// The letter behind the backslash, or 0 for a byte that stands for itself.
char escape(char byte) {
    switch (byte) {
        case '\0':
            return '0';
        case '\t':
            return 't';
        case '\n':
            return 'n';
        case '\r':
            return 'r';
        case '\'':
        case '\\':
            return byte;
        default:
            return 0;
    }
}

}  // namespace

std::ostream& write_quoted(std::ostream& stream, std::string_view bytes) {
    stream.put('\'');
    while (!bytes.empty()) {
        size_t plain = 0;
        while (plain < bytes.size() && !escape(bytes[plain])) ++plain;
        stream.write(bytes.data(), static_cast<std::streamsize>(plain));
        if (plain < bytes.size()) {
            const char pair[] = {'\\', escape(bytes[plain++])};
            stream.write(pair, sizeof pair);
        }
        bytes.remove_prefix(plain);
    }
    return stream.put('\'');
}

bool read_quoted(std::istream& stream, std::vector<char>& bytes) {
    if (usrtype::nullfromstream(stream)) return false;
    if (stream.peek() != '\'') {
        stream.setstate(std::ios::failbit);
        return false;
    }
    std::streambuf& buffer = *stream.rdbuf();
    buffer.sbumpc();
    for (;;) {
        int next = buffer.sbumpc();
        if (next == '\'') return true;
        if (next == '\\') {
            next = buffer.sbumpc();
            if (next != end_of_input) {
                bytes.push_back(unescape(next));
                continue;
            }
        }
        if (next == end_of_input) {
            stream.setstate(std::ios::eofbit);
            return true;
        }
        bytes.push_back(static_cast<char>(next));
    }
}

}  // namespace qve
