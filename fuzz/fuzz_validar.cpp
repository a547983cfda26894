// Any bytes through decoding, parsing, identification, all rules and every correction.
#include "tiss_target.h"
#include "validation/solver.h"

using namespace conferix;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TTissRun run;
    if (!run.Open(BytesOf(data, size)))
        return 0;
    run.Validate();
    for (const auto& message : run.Result().AllMessages)
        for (const auto& solver : message->Solvers())
            solver->SolvedXml();
    return 0;
}
