#include "rules/documents/documents_validation.h"

#include "support/case_file.h"

namespace conferix::tests {
namespace {

TEST(DocumentsValidation, TakesAndRefusesWhatTheCasesHold) {
    const std::map<std::string, bool (*)(std::string_view)> checks = {
        {"CPF", &TDocumentsValidation::IsValidCpf},
        {"CNPJ", &TDocumentsValidation::IsValidCnpj},
        {"CNS", &TDocumentsValidation::IsValidCNS}};
    for (const TCase& c : Cases("rules/documents/documentos.casos"))
        for (const auto& [quoted, none] : c.Inputs)
            EXPECT_EQ(checks.at(c.Section)(quoted.substr(1, quoted.size() - 2)) ? "válido" : "inválido",
                      c.Expected.front())
                << c.Section << " " << quoted;
}

} // namespace
} // namespace conferix::tests
