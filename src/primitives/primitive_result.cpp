#include "primitives/primitive_result.h"

#include <unordered_map>

#include "primitives/primitive.h"

namespace qve {
namespace {

// Filled while static objects are initialised and at start-up; read-only from then on.
std::unordered_map<std::wstring, const primitive_result*>& results() {
    static std::unordered_map<std::wstring, const primitive_result*> directory;
    return directory;
}

}  // namespace

primitive_result::primitive_result(std::wstring_view name, std::initializer_list<usrpropkey> keys)
    : m_name(name), m_keys(keys) {
    results().insert_or_assign(m_name, this);
}

primitive_result::~primitive_result() = default;

usrpropkey primitive_result::tokenprop() const {
    return usrpropkey::empty;
}

usrprops primitive_result::result_props(primitive const* p, std::vector<usrprops> const& inputs) const {
    usrprops properties = primitive::primitive_props(p->result());
    if (properties.empty() && !inputs.empty()) {
        for (const usrpropkey key : m_keys) {
            if (const std::wstring* value = inputs.front().get(key)) properties.set(key, *value);
        }
    }
    return properties;
}

const primitive_result& primitive_result::resolve(std::wstring_view name) {
    static const primitive_result none;
    const auto found = results().find(std::wstring(name));
    return found == results().end() ? none : *found->second;
}

}  // namespace qve
