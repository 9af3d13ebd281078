#include "algebra/exact_cast.h"

#include "types/usrtype.h"

namespace qve {

usratom exact_cast(const usratom& value, const usrtype& type) {
    usratom stored(&type);
    type.cast(stored, value);
    if (stored.isnull()) return usratom();
    usratom back(value.type());
    value.type()->cast(back, stored);
    if (back.isnull() || value.type()->compare(back, value) != 0) return usratom();
    usratom owned;
    owned.assign(&type, stored.data(), stored.length());
    return owned;
}

}  // namespace qve
