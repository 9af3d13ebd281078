// A peer may send any bytes: decoding them in any order gives values or numbered errors, and never leaves the message.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <vector>

#include "server/protocol/QVE_DumpMessage.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/protocol/QVE_ValueArray.h"
#include "system/QuillonException.h"

namespace {

using namespace qve;

void ReadOne(QVE_InputIterator& in, std::uint8_t kind, std::ostream& sink) {
    switch (kind % 8) {
        case 0:
            in.ReadU32();
            break;
        case 1:
            in.ReadU64();
            break;
        case 2:
            in.ReadString();
            break;
        case 3:
            sink << in.ReadBytes();
            break;
        case 4:
            sink << in.ReadValue();
            break;
        case 5: {
            // What was read is written again and must read the same.
            const QVE_PropertyList list = in.ReadProperties();
            QVE_Message copy;
            QVE_OutputIterator(copy).WriteProperties(list);
            if (QVE_InputIterator(copy).ReadProperties().size() != list.size()) __builtin_trap();
            break;
        }
        case 6:
            in.ReadRaw(kind, 2);
            break;
        default: {
            QVE_Message copy = in.GetMessage();
            QVE_ValueArray array;
            array.Assign(copy, in.GetIndex(), kind);
            for (const QVE_Value& value : array.ReadValues()) sink << value;
            in.ReadU32();
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The first bytes say what is read, one after the other; the rest is the message.
    constexpr std::size_t steps = 8;
    if (size < steps) return 0;
    QVE_Message message(size - steps);
    if (size > steps) std::memcpy(message.data(), data + steps, size - steps);
    std::ostringstream sink;
    QVE_DumpMessage(sink, message, message.size());
    QVE_InputIterator in(message);
    try {
        std::uint64_t guid = 0;
        if (data[0] & 0x80) in.ReadHeader(guid);
        for (std::size_t i = 0; i < steps; ++i) ReadOne(in, data[i] & 0x7F, sink);
    } catch (const QuillonException&) {
        if (in.GetIndex() > message.size()) __builtin_trap();
    }
    return 0;
}
