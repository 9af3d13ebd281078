#include "vql/syntax/SymbolDictionary.h"

namespace qve {

const std::wstring SymbolDictionary::emptyToken;

const std::wstring& SymbolDictionary::OrderedValuePtr::AsString() const {
    return m_value ? m_value->GetText() : emptyToken;
}

bool SymbolDictionary::OrderedValuePtr::Same(OrderedValuePtr a, OrderedValuePtr b) {
    if (!a || !b || &a->GetDictionary() == &b->GetDictionary()) return false;
    return a->GetText() == b->GetText();
}

bool operator<(SymbolDictionary::OrderedValuePtr a, SymbolDictionary::OrderedValuePtr b) {
    if (a.m_value == b.m_value || !b) return false;
    if (!a) return true;
    if (&a->GetDictionary() == &b->GetDictionary()) return a->GetOrder() < b->GetOrder();
    return a->GetText() < b->GetText();
}

unsigned SymbolDictionary::OrderedValue::GetOrder() const {
    if (!m_dictionary->m_numbered) m_dictionary->Renumber();
    return m_order;
}

SymbolDictionary::OrderedValuePtr SymbolDictionary::GetToken(std::wstring_view text) {
    const auto place = m_values.lower_bound(text);
    if (place != m_values.end() && place->GetText() == text) return OrderedValuePtr(&*place);
    const auto added = m_values.emplace_hint(place, std::wstring(text), *this);
    m_numbered = false;
    return OrderedValuePtr(&*added);
}

void SymbolDictionary::Renumber() const {
    unsigned order = 0;
    for (const OrderedValue& value : m_values) value.m_order = order++;
    m_numbered = true;
}

}  // namespace qve
