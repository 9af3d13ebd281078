#include <string>
#include <vector>

#include "os/OS.h"
#include "os/Path.h"
#include "server/qvemain.h"

int main(int argc, char** argv) {
    std::vector<std::wstring> arguments;
    for (int i = 0; i < argc; ++i) arguments.push_back(qve::Path::wcharpath(argv[i]));
    using Limits = qve::OS::Limits;
    if (Limits::get_descriptors_hard_limit() > Limits::get_descriptors_soft_limit()) {
        Limits::set_descriptors_soft_limit(Limits::get_descriptors_hard_limit());
    }
    return qve::qvemain(arguments);
}
