#include <exception>
#include <iostream>

#include "cli/CommandLine.h"
#include "cli/Program.h"

int main(int argc, char** argv) {
    const auto commandLine = qve::cli::CommandLine::Parse(argc, argv);
    try {
        return qve::cli::Program(commandLine).Run();
    } catch (const std::exception& exception) {
        std::cerr << "error: " << exception.what() << std::endl;
        return 2;
    }
}
