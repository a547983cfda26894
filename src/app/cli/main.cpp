#include "app/cli/cli.h"
#include "platform/platform.h"
#include "platform/program.h"

#include <iostream>

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    conferix::RemoveTemporaryFilesAtSignals();
    conferix::PrepareStandardStreams();
    return conferix::RunCli(
        conferix::CommandLineWords(argc, argv),
        {std::cin, std::cout, std::cerr, conferix::IsTerminal(stdout), conferix::IsTerminal(stderr)});
}
