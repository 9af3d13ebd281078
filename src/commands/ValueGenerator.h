#pragma once

#include <memory>
#include <string>

#include "storage/Column.h"
#include "types/usrprops.h"

namespace qve {

/// Makes synthetic values for a column. The same properties and seed give the same values. One thread at a time.
class ValueGenerator {
public:
    virtual ~ValueGenerator() = default;

    /// Appends `count` values to the column.
    virtual void Next(unsigned count, Column& column) = 0;

    /// The generator of the mode that the property `generated-by` names:
    /// - "affine": `min-value` and so on, each by one unit of the type more than the one before, up to `max-value`
    /// where
    ///   there is one, then from the beginning;
    /// - "random": values drawn between `min-value` and `max-value`, of `cardinality` different ones where that is set;
    ///   texts are words, of which there are `cardinality`. Unless `not-null` is set, one in sixteen is null.
    /// `type` is that of the column. Throws QVE_InvalidArgument (status::ValueGenerator) when the properties do not say
    /// enough, as "ScalarGenerator: no minimum", or make no sense.
    static std::unique_ptr<ValueGenerator> Make(const usrprops& properties, const usrtype& type, uint64_t seed);
};

}  // namespace qve
