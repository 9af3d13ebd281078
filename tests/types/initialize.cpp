#include <gtest/gtest.h>

#include "types/types_initialization.h"

namespace {

class TypesEnvironment : public testing::Environment {
    void SetUp() override { qve::types_initialization(); }
};

const auto* const environment = testing::AddGlobalTestEnvironment(new TypesEnvironment);

}  // namespace
