#include "support/support.h"
#include "validation/namespace_rule.h"
#include "validation/solver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix {
namespace {

const std::string kTiss = "http://www.ans.gov.br/padroes/tiss/schemas";
const std::string kDs = "http://www.w3.org/2000/09/xmldsig#";

/// A message with a prefix (as "ans:"), its declarations and a last child.
std::string Message(const std::string& p, const std::string& declarations, const std::string& last = "",
                    const std::string& versao = "3.05.00") {
    return "<" + p + "mensagemTISS " + declarations + "><" + p + "cabecalho><" + p + "Padrao>" + versao +
           "</" + p + "Padrao></" + p + "cabecalho>" + last + "</" + p + "mensagemTISS>";
}

const std::string kAns = "xmlns:ans=\"" + kTiss + "\"";
const std::string kNoPrefix = "É necessário incluir o namespace \"ans\" nas tags do xml.";
const std::string kSeveral =
    "Foram encontrado vários namespaces nas tags do xml. O esperado é apenas \"ans\".";
const std::string kGood =
    "O namespace do XML é válido, conforme estabelecido nos schemas XSD do componente de comunicação.";
const std::string kGoodSignature = "O namespace da assinatura digital é válido.";
const std::string kSomeWrong =
    "Algumas tags de assinatura digital estão com o namespace incorreto. O esperado é apenas o "
    "namespace \"ds\".\r\nTags com namespace incorreto: ";
const std::string kNone =
    "As tags de assinatura digital estão sem namespace. É esperado o namespace \"ds\".\r\nTags com "
    "namespace ausente: ";

std::vector<std::string> Judge(const std::string& xml) {
    const auto rule = MakeValidation<TMensagemTissNamespaceValidation>();
    LoadTiss(xml)->Accept(*rule);
    std::vector<std::string> reasons;
    for (const auto& message : rule->ValidationMessages()) {
        const bool good = message->MsgType() == TMessageType::mtSuccess;
        EXPECT_TRUE(good || message->MsgType() == TMessageType::mtError);
        EXPECT_EQ(message->Solvers().size(), good ? 0U : 1U) << message->Reason();
        EXPECT_EQ(message->Line(), 0);
        reasons.push_back(message->Reason());
    }
    return reasons;
}

TEST(NamespaceRule, JudgesMessageAndSignatureTags) {
    const std::string ds = "xmlns:ds=\"" + kDs + "\"";
    const struct {
        const char* Name;
        std::string Xml;
        std::vector<std::string> Reasons;
    } cases[] = {
        {"right", Message("ans:", kAns), {kGood}},
        {"no prefix", Message("", "xmlns=\"" + kTiss + "\""), {kNoPrefix}},
        {"another prefix",
         Message("tiss:", "xmlns:tiss=\"" + kTiss + "\""),
         {"O namespace tiss é inválido. O esperado é \"ans\"."}},
        {"2.02.02 wants another",
         Message("ansTISS:", "xmlns:ansTISS=\"" + kTiss + "\"", "", "2.02.02"),
         {kGood}},
        {"2.02.03 wants another",
         Message("ans:", kAns, "", "2.02.03"),
         {"O namespace ans é inválido. O esperado é \"ansTISS\"."}},
        {"2.02.01 does not", Message("ans:", kAns, "", "2.02.01"), {kGood}},
        {"some tags without", Message("ans:", kAns, "<x/>"), {kSeveral}},
        {"two prefixes", Message("ans:", kAns, "<b:x xmlns:b='v'/>"), {kSeveral}},
        {"signature",
         Message("ans:", kAns, "<ds:Signature " + ds + "><ds:SignedInfo/><ds:KeyInfo/></ds:Signature>"),
         {kGood, kGoodSignature}},
        {"signature in a wrapper",
         Message("ans:", kAns, "<ans:assinaturaDigital " + ds + "><ds:SignedInfo/></ans:assinaturaDigital>"),
         {kGood, kGoodSignature}},
        {"signature without prefix",
         Message("ans:", kAns,
                 "<Signature xmlns='" + kDs + "'><SignedInfo><Reference/></SignedInfo></Signature>"),
         {kGood, kNone + "Signature, SignedInfo, Reference"}},
        {"signature with another prefix",
         Message("ans:", kAns, "<s:Signature xmlns:s='" + kDs + "'><s:SignedInfo/></s:Signature>"),
         {kGood, "O namespace \"s\" é inválido para a assinatura digital. O esperado é \"ds\".\r\nTags com "
                 "namespace "
                 "incorreto: s:Signature, s:SignedInfo"}},
        {"signature with several prefixes",
         Message("ans:", kAns,
                 "<ans:assinaturaDigitalGuia " + ds +
                     "><ds:SignedInfo/><ans:SignatureValue/><KeyInfo/></ans:assinaturaDigitalGuia>"),
         {kGood, kSomeWrong + "ans:SignatureValue, KeyInfo"}},
        // Any tag of a signature whose name contains one of the names counts.
        {"name that contains another",
         Message("ans:", kAns, "<ans:assinaturaDigital><MeuObject1/></ans:assinaturaDigital>"),
         {kGood, kNone + "MeuObject1"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Judge(c.Xml), c.Reasons) << c.Name;
}

TEST(NamespaceSolver, RepairsPrefixesAndDeclarations) {
    const std::string xsi = " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";
    const struct {
        const char* Name;
        std::string Before;
        std::string After;
    } cases[] = {
        {"default namespace", Message("", "xmlns=\"" + kTiss + "\"" + xsi), Message("ans:", kAns + xsi)},
        {"no declaration", Message("", "versao=\"1\""), Message("ans:", "versao=\"1\" " + kAns)},
        {"both declarations", Message("", kAns + " xmlns=\"" + kTiss + "\""), Message("ans:", kAns)},
        {"2.x", Message("ans:", kAns, "", "2.02.03"),
         Message("ansTISS:", "xmlns:ansTISS=\"" + kTiss + "\"", "", "2.02.03")},
        {"signature",
         Message("", "xmlns=\"" + kTiss + "\"",
                 "<Signature xmlns=\"" + kDs + "\" Id=\"a\"><SignedInfo/></Signature>"),
         Message("ans:", kAns,
                 "<ds:Signature Id=\"a\" xmlns:ds=\"" + kDs + "\"><ds:SignedInfo/></ds:Signature>")},
        {"signature in a wrapper, declared above",
         Message("ans:", kAns + " xmlns:ds=\"" + kDs + "\"",
                 "<assinaturaDigital><SignedInfo/><ans:KeyInfo/></assinaturaDigital>"),
         Message("ans:", kAns + " xmlns:ds=\"" + kDs + "\"",
                 "<ans:assinaturaDigital><ds:SignedInfo/><ds:KeyInfo/></ans:assinaturaDigital>")},
        {"what a signature holds of other namespaces",
         Message(
             "", "xmlns=\"" + kTiss + "\"",
             "<s:Signature xmlns:s=\"" + kDs +
                 "\"><s:Object><x:Props xmlns:x='u' x:a='1'><s:DigestValue/></x:Props><y xmlns='v'><z/></y>"
                 "<guia/></s:Object></s:Signature>"),
         Message(
             "ans:", kAns,
             "<ds:Signature xmlns:s=\"" + kDs + "\" xmlns:ds=\"" + kDs +
                 "\"><ds:Object><x:Props xmlns:x='u' x:a='1'><ds:DigestValue/></x:Props><y xmlns='v'><z/></y>"
                 "<ans:guia/></ds:Object></ds:Signature>")},
        {"\"ds\" of another namespace, and of none",
         Message("ds:", "xmlns:ds=\"" + kTiss + "\"", "<ds:Signature><ds:SignedInfo/></ds:Signature><ds:x/>"),
         Message("ans:", kAns,
                 "<ds:Signature xmlns:ds=\"" + kDs + "\"><ds:SignedInfo/></ds:Signature><ans:x/>")},
        {"wrong declarations of the expected prefix",
         Message("t:", "xmlns:ans=\"outro\" xmlns:t=\"" + kTiss + "\"",
                 "<t:x xmlns:ans='" + kTiss + "/velho'/>"),
         Message("ans:", kAns, "<ans:x xmlns:ans=\"" + kTiss + "\"/>")},
        {"the exact address before another, and what attributes use",
         Message("t:", "xmlns:ans=\"" + kTiss + "/v3\" xmlns:t=\"" + kTiss + "\" xmlns:u=\"" + kTiss +
                           "/u\" u:a=\"1\" xsi:type=\"t:ct\""),
         Message("ans:", kAns + " xmlns:t=\"" + kTiss + "\" xmlns:u=\"" + kTiss +
                             "/u\" u:a=\"1\" xsi:type=\"t:ct\" "
                             "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"")},
        {"undeclared prefixes",
         Message("t:", "a=\"1\"", "<assinaturaDigital><d:SignedInfo/><d:x/></assinaturaDigital>"),
         Message("ans:", "a=\"1\" " + kAns,
                 "<ans:assinaturaDigital xmlns:ds=\"" + kDs +
                     "\"><ds:SignedInfo/><ans:x/></ans:assinaturaDigital>")},
    };
    for (const auto& c : cases) {
        const auto rule = MakeValidation<TMensagemTissNamespaceValidation>();
        LoadTiss(c.Before)->Accept(*rule);
        ASSERT_FALSE(rule->ValidationMessages().empty());
        std::shared_ptr<ISolver> solver;
        for (const auto& message : rule->ValidationMessages())
            if (!message->Solvers().empty())
                solver = message->Solvers().front();
        ASSERT_TRUE(solver) << c.Name;
        EXPECT_EQ(solver->Description(), "Corrigir namespaces. ");
        EXPECT_EQ(solver->SolvedXml(), c.After) << c.Name;
        EXPECT_EQ(solver->SolvedXml(), c.After) << c.Name << " twice";
        for (const std::string& reason : Judge(c.After))
            EXPECT_THAT(reason, testing::AnyOf(kGood, kGoodSignature)) << c.Name;
    }
}

} // namespace
} // namespace conferix
