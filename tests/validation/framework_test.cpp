#include "model/mensagem_tiss.h"
#include "rules/rule_table.h"
#include "support/patterns.h"
#include "support/support.h"
#include "validation/solver.h"
#include "validator/rule_list.h"
#include "validator/tiss_validator.h"
#include "xml/xml_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace conferix {
namespace {

using testing::ElementsAre;

class TLeafRule : public TValidation {
  public:
    explicit TLeafRule(std::string prefix) : prefix_(std::move(prefix)) {}
    using TValidation::Visit;
    void Visit(const IMensagemTiss&) override {
        StartVisit();
        Error(nullptr, prefix_ + "1");
        Error(nullptr, prefix_ + "2");
    }

  private:
    std::string prefix_;
};

class TGroupRule : public TValidation {
  public:
    using TValidation::Visit;
    void Visit(const IMensagemTiss& mensagem) override {
        StartVisit();
        Warning(nullptr, "grupo");
        // The same node twice: each child is asked for what it found after every node.
        VisitChildren(mensagem);
        VisitChildren(mensagem);
    }
};

TRuleTable Rules() {
    TRuleTable rules;
    RULE(TGroup, "", "grupo", "Grupo", kRequired, TGroupRule);
    RULE(TFirstLeaf, "grupo", ".primeira", "Primeira", kOptional, TLeafRule, "a");
    RULE(TSecondLeaf, "grupo", "outra.segunda", "Segunda", kOptional, TLeafRule, "b");
    return rules;
}

constexpr const char* kMessage =
    "<mensagemTISS><cabecalho><Padrao>4.01.00</Padrao></cabecalho></mensagemTISS>";

TEST(Framework, MessagesComeInPreOrderAndOfTheLastVisitOnly) {
    const auto group = Rules().MakeValidation("grupo", nullptr);
    const auto file = LoadTiss(kMessage);
    EXPECT_FALSE(group->Validated());
    for (int visit = 0; visit < 2; ++visit) {
        file->Accept(*group);
        std::vector<std::string> reasons;
        for (const auto& message : group->ValidationMessages())
            reasons.push_back(message->Validation().Name + "=" + message->Reason());
        EXPECT_THAT(reasons, ElementsAre("grupo=grupo", "grupo.primeira=a1", "grupo.primeira=a2",
                                         "outra.segunda=b1", "outra.segunda=b2", "grupo.primeira=a1",
                                         "grupo.primeira=a2", "outra.segunda=b1", "outra.segunda=b2"));
    }
    EXPECT_TRUE(group->Validated());
    // A message keeps its rule's identity after the rule is gone, and all of a rule share one.
    auto kept = group->ValidationMessages();
    EXPECT_EQ(&kept[1]->Validation(), &kept[2]->Validation());
    EXPECT_TRUE(kept[0]->Validation().Required);
    EXPECT_FALSE(kept[1]->Validation().Required);
    EXPECT_EQ(kept[1]->Validation().Description, "Primeira");
}

TEST(Framework, ARowStandsBelowAGroupAndOnce) {
    TRuleTable rules = Rules();
    EXPECT_THROW(rules.Add<TGroupRule>("nenhum", ".a", "A", kOptional), std::logic_error);
    EXPECT_THROW(rules.Add<TGroupRule>("grupo", ".primeira", "A", kOptional), std::logic_error);
    EXPECT_THROW(rules.MakeValidation("nenhum", nullptr), std::out_of_range);
}

TEST(Framework, PrefixesTellLineGuideAndField) {
    const auto rule = Rules().MakeValidation("grupo.primeira", nullptr);
    const auto monitoring = [&](const char* campo, const char* guia, int line) {
        return TLoteGuiasMonitoramentoValidationMessage::CreateError(rule.get(), campo, guia, "motivo", "",
                                                                     line)
            ->Msg();
    };
    const auto lot = [&](const char* guia, int line) {
        return TLoteGuiasValidationMessage::CreateInfo(rule.get(), guia, "motivo", "", line)->Msg();
    };
    const struct {
        std::string Text;
        const char* Expected;
    } cases[] = {
        {TXmlMessage::CreateWarn("motivo")->Msg(), "motivo"},
        {TXmlMessage::CreateWarn("motivo", "", 7)->Msg(), "[Linha: 7] motivo"},
        {lot("123", 7), "[Linha: 7] [Guia: 123] motivo"},
        {lot("123", 0), "[Guia: 123] motivo"},
        {lot("", 7), "[Linha: 7] motivo"},
        {monitoring("045", "123", 7), "[Linha: 7] [Guia: 123] [Campo: 045] motivo"},
        {monitoring("045", "123", 0), "[Guia: 123] [Campo: 045] motivo"},
        {monitoring("", "7", 0), "[Guia: 7] motivo"},
        {monitoring("045", "", 0), "[Campo: 045] motivo"},
        {monitoring("", "", 0), "motivo"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.Text, c.Expected);
}

TEST(Framework, MessageWithoutRuleIsAProgrammingError) {
    const auto text = [](auto make) -> std::string {
        try {
            make();
        } catch (const EValidationNotDefinedInMessageException& error) {
            return error.what();
        }
        return "";
    };
    EXPECT_EQ(text([] { TValidationMessage::CreateError(nullptr, "x"); }),
              "Validação não definida na mensagem do tipo TValidationMessage");
    EXPECT_EQ(text([] { TLoteGuiasValidationMessage::CreateWarn(nullptr, "1", "x"); }),
              "Validação não definida na mensagem do tipo TLoteGuiasValidationMessage");
    EXPECT_EQ(text([] { TLoteGuiasMonitoramentoValidationMessage::CreateInfo(nullptr, "1", "2", "x"); }),
              "Validação não definida na mensagem do tipo TLoteGuiasMonitoramentoValidationMessage");
}

TEST(Framework, IdentifiersAreUniqueBracedAndStable) {
    std::set<std::string> ids;
    for (int i = 0; i < 1000; ++i) {
        const auto message = TXmlMessage::CreateInfo("x");
        EXPECT_EQ(message->Id(), message->Id());
        EXPECT_THAT(message->Id(), MatchesPattern("\\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\}"));
        ids.insert(message->Id());
    }
    EXPECT_EQ(ids.size(), 1000U);
}

TEST(Framework, TheValidatorListsItsRulesInTheOrderOfTheTree) {
    const TTissValidator validator(nullptr, {}, nullptr);
    std::vector<std::string> names;
    for (const IValidationIdentity& rule : validator.Validations(true))
        names.push_back(rule->Name);
    std::vector<std::string> listed;
    std::vector<std::string> roots;
    for (const TListedRule& rule : ListRules()) {
        listed.push_back(rule.Rule->Name);
        if (rule.Depth == 0)
            roots.push_back(rule.Rule->Name);
    }
    EXPECT_EQ(names, listed);
    names.clear();
    for (const IValidationIdentity& rule : validator.Validations(false))
        names.push_back(rule->Name);
    EXPECT_EQ(names, roots);
}

TEST(Framework, UpdateNodeValueSolverOutlivesItsMakersAndChangesValuesOnly) {
    std::shared_ptr<ISolver> value;
    std::shared_ptr<ISolver> container;
    std::shared_ptr<ISolver> empty;
    {
        const TXmlParseResult parsed = TXmlParser::Parse(std::string("<a>\n <b>1</b>\n <c><d/></c>\n</a>"));
        TXmlNode& element = *parsed.Document->Element();
        value = std::make_shared<TUpdateNodeValueSolver>(*element.Child("b"), "2.50");
        container = std::make_shared<TUpdateNodeValueSolver>(*element.Child("c"), "3");
        empty = std::make_shared<TUpdateNodeValueSolver>(*element.Find("c/d"), "3");
    }
    EXPECT_EQ(value->Description(), "Alterar o valor para 2.50");
    EXPECT_EQ(value->Name(), "TUpdateNodeValueSolver");
    EXPECT_NE(value->Id(), container->Id());
    EXPECT_EQ(container->SolvedXml(), "<a>\n <b>1</b>\n <c><d/></c>\n</a>");
    EXPECT_EQ(empty->SolvedXml(), "<a>\n <b>1</b>\n <c><d/></c>\n</a>");
    EXPECT_EQ(value->SolvedXml(), "<a>\n <b>2.50</b>\n <c><d/></c>\n</a>");
}

} // namespace
} // namespace conferix
