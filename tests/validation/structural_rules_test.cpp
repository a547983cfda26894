#include "model/monitoramento.h"
#include "rules/rule_table.h"
#include "support/small_lote.h"
#include "support/support.h"
#include "validation/schema_rule.h"
#include "validator/all_rules.h"
#include "validator/tiss_validator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix {
namespace {

using testing::HasSubstr;

class SchemaRule : public testing::Test {
  protected:
    void SetUp() override { WriteTestFile(Schema(), kSmallSchema); }
    std::filesystem::path Schema() const { return folder_.Path() / "tissV4_01_00.xsd"; }
    static std::shared_ptr<TValidation> Rule(const std::filesystem::path& schema) {
        return AllRules().MakeValidation("tiss.mensagem.schema", NewRunContext({}, schema, nullptr));
    }
    TValidationMessages Check(const std::string& xml) const {
        const auto rule = Rule(Schema());
        LoadTiss(xml)->Accept(*rule);
        return rule->ValidationMessages();
    }

  private:
    TTemporaryFolder folder_;
};

TEST_F(SchemaRule, NamesTheGuideOfEachFault) {
    const std::string good = "<ans:dataAtendimento>2026-01-31</ans:dataAtendimento>";
    const TValidationMessages messages =
        Check(Lote("<ans:intruso/>" + Guia("A", good) +
                   Guia("B", "<ans:dataAtendimento>31/01/2026</ans:dataAtendimento>") +
                   Guia("C", good + good) + Guia("", "<ans:dataAtendimento/>")));
    std::vector<std::pair<std::string, std::int32_t>> places;
    for (const auto& message : messages) {
        EXPECT_EQ(message->MsgType(), TMessageType::mtError);
        EXPECT_EQ(message->Reason().find("http://www.ans"), std::string::npos) << message->Reason();
        EXPECT_FALSE(message->SrcText().empty());
        EXPECT_GT(message->LinePos(), 0);
        places.emplace_back(message->NumeroGuia(), message->Line());
    }
    EXPECT_THAT(places, testing::ElementsAre(std::pair("", 2), std::pair("B", 5), std::pair("C", 7),
                                             std::pair("", 9)));
}

TEST_F(SchemaRule, SpeaksOfGuidesInLotsOnly) {
    const TValidationMessages messages = Check(Lote(Guia("A", ""), "CANCELA_GUIA"));
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages.front()->NumeroGuia(), "");
}

TEST_F(SchemaRule, SucceedsWithTheVersion) {
    const TValidationMessages messages =
        Check(Lote(Guia("A", "<ans:dataAtendimento>2026-01-31</ans:dataAtendimento>")));
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages.front()->MsgType(), TMessageType::mtSuccess);
    EXPECT_EQ(messages.front()->Reason(),
              "O XML está de acordo com o schema XSD da versão 4.01.00 do componente de comunicação.");
}

TEST_F(SchemaRule, RaisesForAMissingOrBrokenSchema) {
    const auto rule = Rule("/nenhuma/pasta/tissV4_01_00.xsd");
    try {
        LoadTiss(Lote(""))->Accept(*rule);
        FAIL();
    } catch (const ESchemaNotFound& error) {
        EXPECT_STREQ(error.what(), "Schema file /nenhuma/pasta/tissV4_01_00.xsd not found");
    }
    EXPECT_TRUE(rule->ValidationMessages().empty());
    WriteTestFile(Schema(), "<schema");
    try {
        Check(Lote(""));
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("tissV4_01_00.xsd"));
    }
}

TEST_F(SchemaRule, RunsAmongTheRulesOfItsKindOnly) {
    const std::shared_ptr<IArquivoTiss> file = LoadTiss(Lote(""));
    TTissValidator validator(file, Schema(), TTussConnection::InMemory());
    std::vector<std::string> rules;
    for (const auto& message : validator.Validate())
        if (rules.empty() || rules.back() != message->Validation().Name)
            rules.push_back(message->Validation().Name);
    EXPECT_THAT(rules,
                testing::ElementsAre("tiss.mensagem.namespace", "tiss.mensagem.schema",
                                     "tiss.mensagem.loteguias.lotesemguias",
                                     "tiss.mensagem.loteguias.lotecommaisdecemguias", "tiss.mensagem.hash"));
    EXPECT_TRUE(validator.Validations()[0]->Validated());
    EXPECT_FALSE(validator.Validations()[1]->Validated());
    EXPECT_FALSE(validator.Validations()[2]->Validated());
}

TEST_F(SchemaRule, QualityFilesHaveTheirOwnRules) {
    const TXmlParseResult parsed = TXmlParser::Parse(std::string(
        "<ans:mensagemEnvioANS xmlns:ans=\"http://www.ans.gov.br/padroes/tiss/schemas\"><ans:cabecalho>"
        "<ans:identificacaoTransacao><ans:tipoTransacao>QUALIDADE</ans:tipoTransacao></"
        "ans:identificacaoTransacao>"
        "<ans:versaoPadrao>3.03.03</ans:versaoPadrao></ans:cabecalho></ans:mensagemEnvioANS>"));
    TTissValidator validator(TMonitoramentoQualidade::Create(parsed.Document), Schema(),
                             TTussConnection::InMemory());
    for (const auto& message : validator.Validate())
        EXPECT_THAT(message->Validation().Name, testing::StartsWith("tiss.qualidade."));
    EXPECT_TRUE(validator.Validations()[2]->Validated());
    EXPECT_FALSE(validator.Validations()[0]->Validated());
}

} // namespace
} // namespace conferix
