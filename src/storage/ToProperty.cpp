#include "storage/ToProperty.h"

#include <locale>
#include <sstream>

#include "system/unicode.h"
#include "types/usratom.h"
#include "types/usrtype.h"

namespace qve {

std::wstring ToProperty(const usratom& atom) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    atom.type()->tostream(text, atom);
    return widen(text.str());
}

}  // namespace qve
