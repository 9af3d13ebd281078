#include "types/arrayheap.h"

#include "system/QuillonException.h"
#include "types/status.h"
#include "types/usrtype.h"

namespace qve {

arrayheap::arrayheap(const usrtype* type, DataStream* stream) : usrheap(type, stream, 0) {
    arrayheap::begin();
}

void arrayheap::begin() {
    if (!stream() || stream()->GetSize() > 0 || !stream()->CanExtend()) return;
    const std::string_view null = type()->null_bytes();
    stream()->Append(null.data(), null.size());
}

unsigned long long arrayheap::next() const {
    const uint64_t records = stream() ? stream()->GetSize() / type()->size() : 0;
    return records ? records - 1 : 0;
}

std::string_view arrayheap::bytes(unsigned long long token) const {
    if (token >= next()) return {};
    const uint64_t size = type()->size();
    const uint64_t position = (token + 1) * size;
    uint64_t cursor = stream()->GetCursor();
    if (position < cursor || cursor + stream()->GetLimit() < position + size) {
        stream()->Seek(position, size);
        cursor = position;
    }
    return {stream()->GetInput(position - cursor), static_cast<size_t>(size)};
}

unsigned long long arrayheap::append(std::string_view bytes) {
    if (bytes.size() != type()->size()) {
        throw QVE_OverflowError(status::usrheap_put, "usrheap::put: Value does not fit its heap");
    }
    const unsigned long long token = next();
    const std::string record(bytes);
    stream()->Append(record.data(), record.size());
    return token;
}

}  // namespace qve
