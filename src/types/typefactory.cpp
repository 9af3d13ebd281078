#include "types/typefactory.h"

#include "system/QuillonException.h"
#include "types/status.h"
#include "types/usrprops.h"
#include "types/usrtype.h"

namespace qve {

void typefactory::define(std::wstring value, namer name, creator create) {
    m_entries.insert_or_assign(std::move(value), entry{name, create});
}

std::wstring typefactory::nametype(const usrprops& properties) const {
    const std::wstring* value = properties.get(m_key);
    if (!value) throw QVE_RangeError(status::typefactory_nametype_key, "typefactory::nametype key");
    const auto found = m_entries.find(*value);
    if (found == m_entries.end()) {
        throw QVE_RangeError(status::typefactory_nametype_value, "typefactory::nametype value");
    }
    return found->second.name(properties);
}

std::unique_ptr<usrtype> typefactory::createtype(const usrprops& properties) const {
    const std::wstring* value = properties.get(m_key);
    if (!value) throw QVE_RangeError(status::typefactory_createtype_key, "typefactory::createtype key");
    const auto found = m_entries.find(*value);
    if (found == m_entries.end()) {
        throw QVE_RangeError(status::typefactory_createtype_value, "typefactory::createtype value");
    }
    return found->second.create(properties);
}

}  // namespace qve
