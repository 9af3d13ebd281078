#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "types/usrpropkey.h"
#include "types/usrprops.h"

namespace qve {

class primitive;

/// Tells of an operation what its result column is like, and on which dictionary columns it may run by token.
/// There is one object for each operation with rules of its own; all others share the default.
/// Objects register themselves under their name and live to the end of the process; all operations are const and may be
/// called from any thread.
class primitive_result {
public:
    /// The default rules; not registered.
    primitive_result() = default;
    /// Registers the object for the operation `name`. `keys` are copied from the first input's properties to the
    /// result's when the result is not a plain atom.
    explicit primitive_result(std::wstring_view name, std::initializer_list<usrpropkey> keys = {});
    virtual ~primitive_result();
    primitive_result(const primitive_result&) = delete;
    primitive_result& operator=(const primitive_result&) = delete;

    /// The property an input column must carry for the operation to run directly on dictionary tokens; the empty key
    /// (0) when it may not.
    virtual usrpropkey tokenprop() const;
    /// The properties of the result column of `p` over inputs with these properties, one set for each argument.
    virtual usrprops result_props(primitive const* p, std::vector<usrprops> const& inputs) const;

    const std::wstring& name() const { return m_name; }

    /// The object of an operation, or the default.
    static const primitive_result& resolve(std::wstring_view name);

private:
    std::wstring m_name;
    std::vector<usrpropkey> m_keys;
};

}  // namespace qve
