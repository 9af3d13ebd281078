#pragma once

namespace qve {

/// The coarse class of a type, decoded from the property `datatype` by usrtype::DecodeDataType.
enum class DataType : unsigned char {
    index = 0,    ///< unsigned integers used as positions and tokens
    boolean = 1,  ///< bit
    integer = 2,  ///< signed integers
    real = 3,     ///< float, double
    date = 4,
    datetime = 5,
    duration = 6,
    usr = 7,  ///< heap-stored values: strings, blobs
    spatial = 8,
};

}  // namespace qve
