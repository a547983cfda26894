// What people are told of the rules: what each checks, what fails, and how it is mended.
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// A piece of a text about a rule. In all but code, `marks` set off names and values.
struct TGuideBlock {
    enum class TKind { Paragraph, Item, Code, Quote };

    TKind Kind = TKind::Paragraph;
    std::string Text; ///< one line; of code, the lines as they stand
};

/// A titled part of a text about a rule.
struct TGuideSection {
    std::string Title;
    std::vector<TGuideBlock> Blocks;
};

/// Something that a rule refuses, and what it says of it.
struct TRuleExample {
    std::string Xml;                   ///< an excerpt of a file; empty where no small one shows the fault
    std::vector<std::string> Messages; ///< the reasons of the findings, in order; a line break is "\r\n"
};

/// The titles of the sections, in their order; a group of rules has the last alone.
inline constexpr std::string_view kGuideChecked = "O que é conferido";
inline constexpr std::string_view kGuideExample = "Exemplo que falha";
inline constexpr std::string_view kGuideMend = "Como corrigir";
inline constexpr std::string_view kGuideWhere = "Onde vale";

/// The text about a rule, or about several that check the same in different kinds of guide or file.
class TRuleText {
  public:
    std::string Family;             ///< title of the file that it stands in, as "Procedimentos e despesas"
    std::string Title;              ///< as "Quantidade executada do procedimento"
    std::vector<std::string> Rules; ///< names of the rules
    std::string ShortText;          ///< what is demanded, in a sentence or two of plain text
    std::vector<TGuideSection> Sections;

    /// The section of that title; null when the text has none.
    const TGuideSection* Section(std::string_view title) const;
    /// What the section on examples shows, in order.
    std::vector<TRuleExample> Examples() const;
    /// All of it in Markdown, under a heading of the second level.
    std::string Markdown() const;
    /// The same without the heading and the names of the rules, headings of sections from level three on.
    std::string MarkdownBody() const;
    /// All of it for a terminal, lines broken at `width` characters but for code.
    std::string PlainText(std::size_t width = 80) const;
};

/// The texts about all rules.
class TRuleGuide {
  public:
    /// The texts that come with the program.
    static const TRuleGuide& Instance();
    /// The same without what is told to those who type commands ("(no terminal, ...)", "; no terminal,
    /// ...)"), for the window and for reports, which others read too.
    static const TRuleGuide& WithoutCommands();
    /// Takes files apart: "# family", and for each text "## title", a paragraph "Regras: `name`, `name`", the
    /// short text as the next paragraph, and sections "### title". What does not fit is left out.
    /// `commands`: whether what is told to those who type commands is kept.
    explicit TRuleGuide(std::span<const std::string_view> files, bool commands = true);

    /// The text about the rule of that name; null when there is none.
    const TRuleText* Find(std::string_view rule) const;
    /// All texts in the order of the files.
    const std::vector<TRuleText>& Texts() const { return texts_; }

  private:
    std::vector<TRuleText> texts_;
    std::map<std::string, std::size_t, std::less<>> byRule_;
};

/// The text without the marks around names and values.
std::string WithoutMarks(std::string_view text);

} // namespace conferix
