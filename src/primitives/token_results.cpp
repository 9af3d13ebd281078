#include "primitives/token_results.h"

#include <algorithm>

#include "primitives/primitive.h"
#include "types/usrtype.h"
#include "types/varchar.h"

namespace qve {
namespace {

// What makes up the type of a column.
constexpr usrpropkey type_keys[] = {
    usrpropkey::factory, usrpropkey::builtin, usrpropkey::factory_varchar, usrpropkey::type,  usrpropkey::datatype,
    usrpropkey::size,    usrpropkey::fixed,   usrpropkey::precision,       usrpropkey::scale, usrpropkey::collation};
// What tells of a dictionary and of the tokens into it.
constexpr usrpropkey dictionary_keys[] = {usrpropkey::compression, usrpropkey::storagewidth, usrpropkey::distinct,
                                          usrpropkey::comparable, usrpropkey::default_value};

template <size_t N>
void copy_keys(usrprops& to, const usrprops& from, const usrpropkey (&keys)[N]) {
    for (const usrpropkey key : keys) {
        if (const std::wstring* value = from.get(key)) to.set(key, *value);
    }
}

}  // namespace

usrprops value_result::result_props(primitive const* p, std::vector<usrprops> const& inputs) const {
    if (m_argument >= inputs.size()) return primitive_result::result_props(p, inputs);
    const usrprops& source = inputs[m_argument];
    const bool dictionary = source.has(usrpropkey::compression);
    if (!dictionary && !primitive::primitive_props(p->result()).empty()) {
        return primitive_result::result_props(p, inputs);
    }
    usrprops properties;
    copy_keys(properties, source, type_keys);
    if (dictionary) copy_keys(properties, source, dictionary_keys);
    if (m_share) properties.set(usrpropkey::result_share_dictionary, true);
    return properties;
}

usrprops winner_result::result_props(primitive const* p, std::vector<usrprops> const& inputs) const {
    usrprops properties = value_result::result_props(p, inputs);
    if (properties.text(usrpropkey::factory) != L"varchar") return properties;
    std::vector<const usrtype*> types;
    for (const usrprops& input : inputs) types.push_back(usrtype::resolve(input));
    const usrprops widest = varchar::maxtype(types.begin(), types.end())->properties();
    copy_keys(properties, widest, type_keys);
    return properties;
}

usrprops text_result::result_props(primitive const*, std::vector<usrprops> const& inputs) const {
    unsigned long long scale = 1;
    std::wstring collation;
    for (const usrprops& input : inputs) {
        if (input.text(usrpropkey::factory) != L"varchar") continue;
        scale = std::max(scale, input.number(usrpropkey::scale, 2));
        if (collation.empty()) collation = input.text(usrpropkey::collation);
    }
    usrprops properties =
        varchar::propsof(varchar::clob_precision, scale, collation.empty() ? nullptr : collation.c_str());
    properties.set(usrpropkey::compression, L"heap");
    return properties;
}

usrprops sortkey_result::result_props(primitive const*, std::vector<usrprops> const&) const {
    usrprops properties = varchar::propsof(varchar::clob_precision, 1);
    properties.set(usrpropkey::compression, L"heap");
    return properties;
}

}  // namespace qve
