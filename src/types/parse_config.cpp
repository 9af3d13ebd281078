#include "types/parse_config.h"

namespace qve {

const parse_config& parse_config::standard() {
    static const parse_config config;
    return config;
}

}  // namespace qve
