#include "types/selected_rows.h"

#include "system/QuillonException.h"
#include "types/status.h"
#include "types/usrheap.h"

namespace qve {

void store_token(output_column column, unsigned long row, unsigned long long token) {
    const auto store = [&](auto narrow) {
        using token_type = decltype(narrow);
        constexpr auto null = static_cast<token_type>(~token_type{0});
        narrow = null;
        if (token != usrheap::null_token) {
            if (token >= null)
                throw QVE_OverflowError(status::usrtype_put, "usrtype::put: Token does not fit its column");
            narrow = static_cast<token_type>(token);
        }
        std::memcpy(column.values<char>() + row * sizeof narrow, &narrow, sizeof narrow);
    };
    switch (column.width) {
        case 1:
            return store(static_cast<unsigned char>(0));
        case 2:
            return store(static_cast<unsigned short>(0));
        case 4:
            return store(0U);
        case 8:
            return store(0ULL);
        default:
            return;
    }
}

}  // namespace qve
