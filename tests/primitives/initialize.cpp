#include <gtest/gtest.h>

#include "primitives/define_primitives.h"
#include "types/types_initialization.h"

namespace {

class KernelEnvironment : public testing::Environment {
    void SetUp() override {
        qve::types_initialization();
        qve::define_primitives();
    }
};

const auto* const environment = testing::AddGlobalTestEnvironment(new KernelEnvironment);

}  // namespace
