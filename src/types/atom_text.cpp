#include "types/atom_text.h"

#include <charconv>
#include <istream>
#include <ostream>
#include <string>

#include "types/parse_value.h"
#include "types/usrtype.h"

namespace qve {
namespace {

// Takes characters from the front of a stream while they are wanted, and never one too many.
class taker {
public:
    explicit taker(std::istream& stream) : m_stream(stream) {}

    int peek() { return m_stream.rdbuf()->sgetc(); }
    void take() { m_text.push_back(static_cast<char>(m_stream.rdbuf()->sbumpc())); }
    bool take_if(std::string_view wanted) {
        const int next = peek();
        if (next == std::char_traits<char>::eof()) return false;
        if (wanted.find(static_cast<char>(next)) == std::string_view::npos) return false;
        // Longer than any value: what follows would only fail later.
        if (m_text.size() >= 1024) return false;
        take();
        return true;
    }
    void take_all(std::string_view wanted) {
        while (take_if(wanted)) {
        }
    }
    const std::string& text() const { return m_text; }
    void drop_last() { m_text.pop_back(); }

private:
    std::istream& m_stream;
    std::string m_text;
};

constexpr std::string_view digits = "0123456789";

void take_real(taker& in) {
    in.take_if("+-");
    if (in.take_if("iInN")) {
        in.take_all("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ");
        return;
    }
    in.take_all(digits);
    if (in.take_if(".")) in.take_all(digits);
    if (in.take_if("eE")) {
        in.take_if("+-");
        in.take_all(digits);
    }
}

template <class T>
void take_value(taker& in) {
    if constexpr (std::is_same_v<T, bit>) {
        in.take_if("tTfF");
    } else if constexpr (std::is_floating_point_v<T>) {
        take_real(in);
    } else if constexpr (std::is_same_v<T, date>) {
        in.take_all("0123456789-/.");
    } else if constexpr (std::is_same_v<T, datetime>) {
        in.take_all("0123456789-/.");
        if (!in.take_if(" T")) return;
        if (in.peek() < '0' || in.peek() > '9') {
            in.drop_last();
            return;
        }
        in.take_all("0123456789:.");
    } else if constexpr (std::is_same_v<T, duration>) {
        in.take_if("-");
        in.take_all("0123456789:.");
    } else {
        in.take_if("+-");
        in.take_all(digits);
    }
}

// A format without grouped digits: in a text form a comma ends the number.
const parse_config& stream_config() {
    static const parse_config config = [] {
        parse_config c;
        c.thousands = 0;
        c.percent = 0;
        return c;
    }();
    return config;
}

}  // namespace

template <class T>
std::ostream& print_atom(std::ostream& stream, const T& value) {
    if (is_null(value)) return stream << "NULL";
    if constexpr (std::is_same_v<T, bit>) {
        if (value.value < 2) return stream.put(value.value ? 't' : 'f');
        return stream << std::to_string(value.value);
    } else if constexpr (std::is_floating_point_v<T>) {
        char buffer[40];
        constexpr int precision = sizeof(T) == 4 ? 9 : 17;
        const auto [end, error] =
            std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, precision);
        return stream.write(buffer, end - buffer);
    } else if constexpr (std::is_arithmetic_v<T>) {
        char buffer[24];
        const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, static_cast<long long>(value));
        if constexpr (std::is_same_v<T, oid>) {
            const auto unsigned_end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
            return stream.write(buffer, unsigned_end - buffer);
        }
        return stream.write(buffer, end - buffer);
    } else {
        return stream << value;
    }
}

template <class T>
T read_atom(std::istream& stream) {
    T value = datatraits<T>::null;
    if (usrtype::nullfromstream(stream)) return value;
    taker in(stream);
    take_value<T>(in);
    const std::string& text = in.text();
    if (parse_value(value, 0, static_cast<unsigned>(text.size()), text.data(), stream_config())) {
        // A bit takes the character that it does not know.
        if (std::is_same_v<T, bit> && text.empty()) stream.rdbuf()->sbumpc();
        stream.setstate(std::ios::failbit);
    }
    return value;
}

#define QVE_ATOM_TEXT(T)                                        \
    template std::ostream& print_atom(std::ostream&, const T&); \
    template T read_atom<T>(std::istream&);
QVE_ATOM_TEXT(bit)
QVE_ATOM_TEXT(char)
QVE_ATOM_TEXT(short)
QVE_ATOM_TEXT(int)
QVE_ATOM_TEXT(long long)
QVE_ATOM_TEXT(unsigned char)
QVE_ATOM_TEXT(unsigned short)
QVE_ATOM_TEXT(unsigned int)
QVE_ATOM_TEXT(unsigned long long)
QVE_ATOM_TEXT(float)
QVE_ATOM_TEXT(double)
QVE_ATOM_TEXT(date)
QVE_ATOM_TEXT(datetime)
QVE_ATOM_TEXT(duration)
#undef QVE_ATOM_TEXT

}  // namespace qve
