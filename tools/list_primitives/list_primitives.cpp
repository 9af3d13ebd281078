// Prints the full name of every registered kernel, one a line, sorted; with arguments only those that contain all of
// them.

#include <iostream>
#include <string>

#include "primitives/define_primitives.h"
#include "primitives/primitive_directory.h"
#include "system/unicode.h"
#include "types/types_initialization.h"

int main(int argc, char** argv) {
    qve::types_initialization();
    qve::define_primitives();
    for (const qve::primitive* p : qve::primitive::directory().all()) {
        const std::string name = qve::narrow(p->name());
        bool wanted = true;
        for (int i = 1; i < argc; ++i) wanted = wanted && name.find(argv[i]) != std::string::npos;
        if (wanted) std::cout << name << '\n';
    }
    return std::cout.flush() ? 0 : 1;
}
