#include "app/message_groups.h"
#include "validation/validation.h"

#include <gtest/gtest.h>

namespace conferix {
namespace {

/// A rule that says what it is told.
class TSayingRule : public TValidation {
  public:
    TSayingRule() { SetIdentity(std::make_shared<TValidationIdentity>(TValidationIdentity{"r", "R", true})); }
};

struct TFound {
    std::string Guia;
    std::int32_t Line;
    std::string Reason;
    bool OfFile = false;
    std::string Mark = {}; ///< of its guide, where the message does not name it
    std::string Cause = {};
    TFindingKind Kind = TFindingKind::Value;
};

TXmlMessages MessagesOf(const TSayingRule& rule, const std::vector<TFound>& found) {
    TXmlMessages messages;
    for (const TFound& one : found)
        if (one.OfFile)
            messages.push_back(TXmlMessage::CreateWarn(one.Reason));
        else {
            const auto message = TLoteGuiasValidationMessage::CreateError(&rule, one.Guia, one.Reason, "",
                                                                          one.Line, 1, one.Line);
            message->SetGuide(one.Mark);
            message->SetCause(one.Cause);
            message->SetKind(one.Kind);
            message->SetGroupKey(std::hash<std::string>()(one.Cause) * (one.Cause.empty() ? 0 : 1));
            messages.push_back(message);
        }
    return messages;
}

std::vector<std::string> Told(const std::vector<TFound>& found) {
    const TSayingRule rule;
    const TXmlMessages messages = MessagesOf(rule, found);
    std::vector<std::string> told;
    for (const TMessageGroup& group : GroupMessages(messages))
        told.push_back(GroupText(messages, group));
    return told;
}

using TTold = std::vector<std::string>;

TEST(MessageGroups, TellOneCauseOnce) {
    EXPECT_EQ(Told({{"1", 9, "b"}, {"2", 5, "a"}}),
              (TTold{"[Linha: 9] [Guia: 1] b", "[Linha: 5] [Guia: 2] a"}));
    // Groups by number of guides, then by line; what stands alone after them, what is of the file before.
    EXPECT_EQ(Told({{"", 0, "codificação", true},
                    {"1", 8, "x"},
                    {"1", 3, "só"},
                    {"1", 4, "y"},
                    {"2", 6, "y"},
                    {"2", 9, "x"},
                    {"1", 10, "z"},
                    {"2", 11, "z"},
                    {"3", 12, "z"},
                    {"3", 13, "z"},
                    {"3", 13, "z"}}),
              (TTold{"codificação", "3 guias, 5 vezes: z (linhas 10, 11, 12 e mais 1)",
                     "2 guias: y (linhas 4 e 6)", "2 guias: x (linhas 8 e 9)", "[Linha: 3] [Guia: 1] só"}));
    EXPECT_EQ(Told({{"7", 1, "w"}, {"7", 2, "w"}}), (TTold{"[Guia: 7] 2 vezes: w (linhas 1 e 2)"}));
    // What all else follows from.
    EXPECT_EQ(Told({{"1", 8, "x"}, {"2", 9, "x"}, {"", 2, "raiz", false, "", "", TFindingKind::Root}}),
              (TTold{"[Linha: 2] raiz", "2 guias: x (linhas 8 e 9)"}));
    // Guides of one number.
    EXPECT_EQ(Told({{"1", 1, "w", false, "@1"}, {"1", 2, "w", false, "@2"}}),
              (TTold{"2 guias: w (linhas 1 e 2)"}));
    // Guides that the messages do not name.
    EXPECT_EQ(Told({{"", 1, "w", false, "@1"}, {"", 2, "w", false, "@2"}, {"", 3, "w", false, "@2"}}),
              (TTold{"2 guias, 3 vezes: w (linhas 1, 2 e 3)"}));
    EXPECT_EQ(Told({{"", 1, "w", false, "@1"}, {"", 2, "w", false, "@1"}}),
              (TTold{"2 vezes: w (linhas 1 e 2)"}));
    // One cause in several places.
    EXPECT_EQ(Told({{"1", 1, "x antes de a", false, "", "x"}, {"2", 2, "x antes de b", false, "", "x"}}),
              (TTold{"2 guias: x antes de a (linhas 1 e 2; o lugar varia)"}));
}

TEST(MessageGroups, AreGoneThroughByLine) {
    const TSayingRule rule;
    TXmlMessages messages = MessagesOf(rule, {{"", 0, "codificação", true},
                                              {"1", 9, "b"},
                                              {"1", 8, "x"},
                                              {"1", 3, "a"},
                                              {"2", 30, "x"},
                                              {"1", 0, "sem linha"}});
    messages.push_back(std::make_shared<TXmlMessage>(TMessageType::mtSuccess, "veredito"));
    std::vector<TMessageGroup> groups = GroupMessages(messages);
    SortByLine(messages, groups);
    std::string told;
    for (const TMessageGroup& group : groups)
        told += GroupText(messages, group) + '\n';
    EXPECT_EQ(told, "codificação\n2 guias: x (linhas 8 e 30)\n[Guia: 1] sem linha\n[Linha: 3] [Guia: 1] a\n"
                    "[Linha: 9] [Guia: 1] b\nveredito\n");
}

TEST(MessageGroups, LookThroughAmountsAndDatesButNotCodes) {
    const std::string note = "; os valores variam)";
    EXPECT_EQ(Told({{"1", 1, "O valor 10.00 do total, esperado 9.50."},
                    {"2", 2, "O valor 8.00 do total, esperado 7.25."}}),
              (TTold{"2 guias: O valor 10.00 do total, esperado 9.50. (linhas 1 e 2" + note}));
    EXPECT_EQ(Told({{"1", 1, "Em 2024-01-31."}, {"2", 2, "Em 2023-12-01."}}).size(), 1U);
    EXPECT_EQ(Told({{"1", 1, "O código 10101012."}, {"2", 2, "O código 10101039."}}).size(), 2U);
    EXPECT_EQ(Told({{"1", 1, "Termina em 5."}, {"2", 2, "Termina em 6."}}).size(), 2U);
}

} // namespace
} // namespace conferix
