// Any bytes through decoding, parsing, identification, all rules and every correction.
// Run: fuzz_validar -dict=fuzz/tiss.dict CORPUS exemplos; CONFERIX_FUZZ_ESQUEMAS names a folder of XSD files.

#include "app/config.h"
#include "app/validador_controller.h"
#include "data/tuss_connection.h"
#include "validation/solver.h"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace conferix;
    static const auto terminology = TTussConnection::InMemory();
    static const std::vector<std::string> enabled = [] {
        TConfig config;
        config.SetDefaultInitialConfig();
        return config.EnabledValidations();
    }();
    TValidadorController controller(TDBConnectionFactory([] { return terminology; }));
    if (const char* schemas = std::getenv("CONFERIX_FUZZ_ESQUEMAS"))
        controller.SetSchemaTissPath(schemas);
    std::shared_ptr<const std::string> text;
    controller.Events().OnFileOpen.Subscribe([&](TFileOpenArgs& args) { text = args.SharedContent; });
    TXmlMessages messages;
    controller.Events().OnValidate.Subscribe([&](TValidateArgs& args) { messages = args.AllMessages; });
    try {
        controller.Load("fuzz", TTissFile(std::string(reinterpret_cast<const char*>(data), size)));
    } catch (const EXmlEncoding&) {
        return 0;
    }
    controller.Validate(text, enabled);
    if (messages.empty())
        std::abort(); // a run always ends in at least one message
    for (const auto& message : messages)
        for (const auto& solver : message->Solvers())
            solver->SolvedXml();
    return 0;
}
