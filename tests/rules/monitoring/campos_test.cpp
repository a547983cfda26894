#include "rules/monitoring/guia_de_teste.h"

namespace conferix::tests {
namespace {

TEST(CamposMonitoramento, FindWhatTheCasesSay) {
    for (const TCase& c : Cases("rules/monitoring/campos.casos"))
        ExpectLines(c, Findings(*ArquivoEditado(c.Inputs), Terminologia(), c.Section));
}

} // namespace
} // namespace conferix::tests
