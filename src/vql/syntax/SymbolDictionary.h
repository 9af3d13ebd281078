#pragma once

#include <set>
#include <string>
#include <string_view>

namespace qve {

/// The texts of all names that one session uses, each held once, so that names compare by one integer.
/// Everything that holds a token must not outlive its dictionary. Not synchronised: one statement at a time.
class SymbolDictionary {
public:
    class OrderedValue;

    /// A non-owning pointer to a text of some dictionary. Null is the empty token, which reads as `emptyToken`.
    /// Tokens of one dictionary compare by their order number, tokens of two by their texts; null sorts first and
    /// equals only null.
    class OrderedValuePtr {
    public:
        OrderedValuePtr() = default;
        explicit OrderedValuePtr(const OrderedValue* value) : m_value(value) {}

        explicit operator bool() const { return m_value != nullptr; }
        const OrderedValue* operator->() const { return m_value; }
        const std::wstring& AsString() const;

        friend bool operator==(OrderedValuePtr a, OrderedValuePtr b) { return a.m_value == b.m_value || Same(a, b); }
        friend bool operator<(OrderedValuePtr a, OrderedValuePtr b);

    private:
        static bool Same(OrderedValuePtr a, OrderedValuePtr b);

        const OrderedValue* m_value = nullptr;
    };

    /// One interned text.
    class OrderedValue {
    public:
        OrderedValue(std::wstring text, SymbolDictionary& dictionary)
            : m_text(std::move(text)), m_dictionary(&dictionary) {}
        const std::wstring& GetText() const { return m_text; }
        /// The number of texts of the dictionary that sort before this one.
        unsigned GetOrder() const;
        SymbolDictionary& GetDictionary() const { return *m_dictionary; }

    private:
        friend class SymbolDictionary;

        std::wstring m_text;
        SymbolDictionary* m_dictionary;
        mutable unsigned m_order = 0;
    };

    static const std::wstring emptyToken;

    SymbolDictionary() = default;
    SymbolDictionary(const SymbolDictionary&) = delete;
    SymbolDictionary& operator=(const SymbolDictionary&) = delete;

    /// The token of `text`, which is added if it is new.
    OrderedValuePtr GetToken(std::wstring_view text);
    /// Whether `text` is known; adds nothing.
    bool count(std::wstring_view text) const { return m_values.find(text) != m_values.end(); }

private:
    struct TextLess {
        using is_transparent = void;
        static std::wstring_view Text(std::wstring_view text) { return text; }
        static std::wstring_view Text(const OrderedValue& value) { return value.m_text; }
        template <class A, class B>
        bool operator()(const A& a, const B& b) const {
            return Text(a) < Text(b);
        }
    };

    void Renumber() const;

    std::set<OrderedValue, TextLess> m_values;
    // Order numbers are brought up to date when they are next read: a statement adds its names in bulk and compares
    // them afterwards, so adding a million names stays cheap.
    mutable bool m_numbered = true;
};

}  // namespace qve
