#include "primitives/datetime_parser.h"
#include "primitives/text_function.h"
#include "system/UnicodeUnits.h"
#include "types/ICUCollation.h"
#include "types/usrtype.h"

namespace qve {
namespace {

struct parsedate_function {
    static constexpr const wchar_t* name = L"parsedate";
    static constexpr text_kind kind = text_kind::moment;
    static long long apply(text_call& call) {
        // Names of months are in the language of the text; where that is not known, in English.
        const auto* order = dynamic_cast<const ICUCollation*>(call.order);
        const char* locale = order ? order->GetLocale().c_str() : "en_US";
        std::u16string buffers[2];
        std::u16string_view units[2];
        for (int i = 0; i < 2; ++i) {
            const usratom& text = *call.text[i];
            units[i] = Unicode::ToUTF16(text.bytes(), static_cast<unsigned>(text.type()->scale()), buffers[i]);
        }
        const auto moment = datetime_parser::local()(units[0], units[1], locale);
        return moment ? static_cast<long long>(moment->value) : text_call::null;
    }
};

const register_text_function<parsedate_function, for_each_pair<moment_of_two, usr_atoms>, modes2> registered;

}  // namespace

void define_parsedate() {}

}  // namespace qve
