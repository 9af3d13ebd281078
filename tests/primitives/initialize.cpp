#include <gtest/gtest.h>

#include <cstdlib>

#include "primitives/define_primitives.h"
#include "types/types_initialization.h"

namespace {

class KernelEnvironment : public testing::Environment {
    void SetUp() override {
        ::setenv("LC_ALL", "C", 1);  // the names of days are English
        qve::types_initialization();
        qve::define_primitives();
    }
};

const auto* const environment = testing::AddGlobalTestEnvironment(new KernelEnvironment);

}  // namespace
