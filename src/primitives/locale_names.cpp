#include "primitives/locale_names.h"

#include <map>
#include <memory>
#include <mutex>

#include "system/QuilICUDateFormat.h"
#include "system/UnicodeUnits.h"
#include "types/ICUCollation.h"
#include "types/usrtype.h"

namespace qve {
namespace {

// The first `count` names in UTF-8; the English ones where the locale does not have so many.
std::vector<std::string> texts(const std::vector<std::u16string>& names, std::vector<std::string> english) {
    if (names.size() < english.size()) return english;
    for (size_t i = 0; i < english.size(); ++i) {
        const std::string_view units(reinterpret_cast<const char*>(names[i].data()), 2 * names[i].size());
        std::string buffer;
        if (!units.empty()) english[i] = Unicode::ToUTF8(units, 2, buffer);
    }
    return english;
}

std::unique_ptr<locale_names> names_of(const char* locale) {
    return std::make_unique<locale_names>(locale_names{
        texts(QuilICU::DateFormat::MonthNames(locale), {"January", "February", "March", "April", "May", "June", "July",
                                                        "August", "September", "October", "November", "December"}),
        texts(QuilICU::DateFormat::WeekdayNames(locale),
              {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"})});
}

}  // namespace

const locale_names& locale_names::of(const usrtype* type) {
    static std::mutex mutex;
    static std::map<std::string, std::unique_ptr<locale_names>> known;
    const auto* named = dynamic_cast<const ICUCollation*>(type->collation());
    const std::string locale = named ? named->GetLocale() : std::string();
    const std::lock_guard lock(mutex);
    std::unique_ptr<locale_names>& names = known[locale];
    if (!names) names = names_of(named ? locale.c_str() : nullptr);
    return *names;
}

}  // namespace qve
