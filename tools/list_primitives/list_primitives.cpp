// Prints the full name of every registered kernel, one a line, sorted; with arguments only those that contain all of
// them. With --count instead how many kernels each operation has, by family and number of arguments.

#include <iostream>
#include <map>
#include <string>
#include <string_view>
#include <tuple>

#include "primitives/define_primitives.h"
#include "primitives/primitive_directory.h"
#include "system/unicode.h"
#include "types/types_initialization.h"

namespace {

void Count() {
    std::map<std::tuple<std::wstring, size_t, std::wstring>, unsigned> counts;
    unsigned all = 0;
    for (const qve::primitive* p : qve::primitive::directory().all()) {
        ++counts[{p->klass(), p->arguments().size(), p->operation()}];
        ++all;
    }
    for (const auto& [key, count] : counts) {
        const auto& [klass, arguments, operation] = key;
        std::cout << qve::narrow(klass) << ' ' << arguments << ' ' << qve::narrow(operation) << ' ' << count << '\n';
    }
    std::cout << all << " in all\n";
}

}  // namespace

int main(int argc, char** argv) {
    qve::types_initialization();
    qve::define_primitives();
    if (argc == 2 && std::string_view(argv[1]) == "--count") {
        Count();
        return std::cout.flush() ? 0 : 1;
    }
    for (const qve::primitive* p : qve::primitive::directory().all()) {
        const std::string name = qve::narrow(p->name());
        bool wanted = true;
        for (int i = 1; i < argc; ++i) wanted = wanted && name.find(argv[i]) != std::string::npos;
        if (wanted) std::cout << name << '\n';
    }
    return std::cout.flush() ? 0 : 1;
}
