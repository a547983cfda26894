#include "report/rule_guide.h"

#include "platform/utf8.h"
#include "report/rule_texts.h"

#include <algorithm>
#include <utility>

namespace conferix {

namespace {

constexpr std::string_view kFence = "```";
constexpr std::string_view kRulesLabel = "Regras: ";

/// Takes remarks for those who type commands out of a text, with their brackets where nothing else is in
/// them.
void LeaveCommandsOut(std::string& text) {
    for (const std::string_view remark : {" (no terminal, ", "; no terminal, "})
        for (std::size_t at = 0; (at = text.find(remark, at)) != std::string::npos;) {
            const std::size_t end = text.find(')', at);
            text.erase(at, end == std::string::npos ? end : end - at + (remark.front() == ' ' ? 1 : 0));
        }
}

/// Takes the lines of one file apart.
class TGuideReader {
  public:
    TGuideReader(std::vector<TRuleText>& texts, bool commands) : texts_(texts), commands_(commands) {}

    void Read(std::string_view file) {
        family_.clear();
        current_ = nullptr;
        while (!file.empty()) {
            const std::size_t end = std::min(file.find('\n'), file.size());
            TakeLine(file.substr(0, end));
            file.remove_prefix(std::min(end + 1, file.size()));
        }
        EndBlock();
    }

  private:
    void TakeLine(std::string_view line) {
        if (inCode_) {
            if (line.starts_with(kFence)) {
                inCode_ = false;
                EndBlock();
            } else {
                block_.Text.append(block_.Text.empty() ? "" : "\n").append(line);
            }
        } else if (line.starts_with(kFence)) {
            Begin(TGuideBlock::TKind::Code, {});
            inCode_ = true;
        } else if (line.empty()) {
            EndBlock();
        } else if (line.starts_with("### ")) {
            EndBlock();
            if (current_ != nullptr)
                current_->Sections.push_back({std::string(line.substr(4)), {}});
        } else if (line.starts_with("## ")) {
            EndBlock();
            current_ = &texts_.emplace_back();
            current_->Family = family_;
            current_->Title = line.substr(3);
        } else if (line.starts_with("# ")) {
            family_ = line.substr(2);
        } else if (line.starts_with("- ")) {
            Begin(TGuideBlock::TKind::Item, line.substr(2));
        } else if (line.starts_with("> ")) {
            // Each line of a quotation is one of the message's.
            if (open_ && block_.Kind == TGuideBlock::TKind::Quote)
                block_.Text.append("\r\n").append(line.substr(2));
            else
                Begin(TGuideBlock::TKind::Quote, line.substr(2));
        } else if (open_) {
            block_.Text.append(" ").append(line.substr(line.find_first_not_of(' ')));
        } else {
            Begin(TGuideBlock::TKind::Paragraph, line);
        }
    }

    void Begin(TGuideBlock::TKind kind, std::string_view text) {
        EndBlock();
        block_ = {kind, std::string(text)};
        open_ = true;
    }

    void EndBlock() {
        if (!std::exchange(open_, false) || current_ == nullptr)
            return;
        if (!commands_)
            LeaveCommandsOut(block_.Text);
        if (!current_->Sections.empty())
            current_->Sections.back().Blocks.push_back(std::move(block_));
        else if (block_.Text.starts_with(kRulesLabel))
            TakeRules(block_.Text);
        else
            current_->ShortText.append(current_->ShortText.empty() ? "" : " ")
                .append(WithoutMarks(block_.Text));
    }

    void TakeRules(std::string_view names) {
        for (;;) {
            const std::size_t begin = names.find('`');
            const std::size_t end = begin == std::string_view::npos ? begin : names.find('`', begin + 1);
            if (end == std::string_view::npos)
                return;
            current_->Rules.emplace_back(names.substr(begin + 1, end - begin - 1));
            names.remove_prefix(end + 1);
        }
    }

    std::vector<TRuleText>& texts_;
    bool commands_;
    std::string family_;
    TRuleText* current_ = nullptr;
    TGuideBlock block_;
    bool open_ = false;
    bool inCode_ = false;
};

/// Appends a text whose lines are broken between words at `width` characters, the first after `first` and the
/// others after as many blanks.
void AppendWrapped(std::string& out, std::string_view text, std::string_view first, std::size_t width) {
    out += first;
    std::size_t column = CountCharacters(first);
    const std::string indent(column, ' ');
    bool atStart = true;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        const std::size_t length = CountCharacters(word);
        if (!atStart && column + 1 + length > width) {
            out.append("\n").append(indent);
            column = indent.size();
            atStart = true;
        }
        if (!atStart) {
            out += ' ';
            ++column;
        }
        out += word;
        column += length;
        atStart = false;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    out += '\n';
}

/// Appends lines that stand as they are, each after `first`.
void AppendLines(std::string& out, std::string_view text, std::string_view separator,
                 std::string_view first) {
    for (;;) {
        const std::size_t end = text.find(separator);
        out.append(first).append(text.substr(0, end)).append("\n");
        if (end == std::string_view::npos)
            return;
        text.remove_prefix(end + separator.size());
    }
}

/// Appends what the program says, each of its lines marked as said.
void AppendQuote(std::string& out, std::string_view text, std::size_t width) {
    for (;;) {
        const std::size_t end = text.find("\r\n");
        AppendWrapped(out, text.substr(0, end), "  > ", width);
        if (end == std::string_view::npos)
            return;
        text.remove_prefix(end + 2);
    }
}

} // namespace

std::string WithoutMarks(std::string_view text) {
    std::string plain(text);
    std::erase(plain, '`');
    return plain;
}

const TGuideSection* TRuleText::Section(std::string_view title) const {
    const auto found = std::ranges::find(Sections, title, &TGuideSection::Title);
    return found == Sections.end() ? nullptr : &*found;
}

std::vector<TRuleExample> TRuleText::Examples() const {
    std::vector<TRuleExample> examples;
    const TGuideSection* section = Section(kGuideExample);
    if (section == nullptr)
        return examples;
    for (const TGuideBlock& block : section->Blocks) {
        if (block.Kind == TGuideBlock::TKind::Code) {
            examples.push_back({block.Text, {}});
        } else if (block.Kind == TGuideBlock::TKind::Quote) {
            if (examples.empty())
                examples.emplace_back();
            examples.back().Messages.push_back(block.Text);
        }
    }
    return examples;
}

std::string TRuleText::MarkdownBody() const {
    std::string out = ShortText + '\n';
    for (const TGuideSection& section : Sections) {
        out.append("\n### ").append(section.Title).append("\n");
        TGuideBlock::TKind last = TGuideBlock::TKind::Paragraph;
        for (const TGuideBlock& block : section.Blocks) {
            if (block.Kind != TGuideBlock::TKind::Item || last != TGuideBlock::TKind::Item)
                out += '\n';
            last = block.Kind;
            switch (block.Kind) {
            case TGuideBlock::TKind::Paragraph:
                out.append(block.Text).append("\n");
                break;
            case TGuideBlock::TKind::Item:
                out.append("- ").append(block.Text).append("\n");
                break;
            case TGuideBlock::TKind::Code:
                out.append(kFence).append("xml\n").append(block.Text).append("\n```\n");
                break;
            case TGuideBlock::TKind::Quote:
                AppendLines(out, block.Text, "\r\n", "> ");
                break;
            }
        }
    }
    return out;
}

std::string TRuleText::Markdown() const {
    std::string out = "## " + Title + "\n\n" + std::string(kRulesLabel);
    for (const std::string& rule : Rules)
        out.append(&rule == &Rules.front() ? "`" : ", `").append(rule).append("`");
    return out + "\n\n" + MarkdownBody();
}

std::string TRuleText::PlainText(std::size_t width) const {
    std::string out = Title + "\n\n";
    AppendWrapped(out, ShortText, "", width);
    for (const TGuideSection& section : Sections) {
        out.append("\n").append(section.Title).append("\n");
        for (const TGuideBlock& block : section.Blocks) {
            switch (block.Kind) {
            case TGuideBlock::TKind::Paragraph:
                AppendWrapped(out, WithoutMarks(block.Text), "  ", width);
                break;
            case TGuideBlock::TKind::Item:
                AppendWrapped(out, WithoutMarks(block.Text), "  - ", width);
                break;
            case TGuideBlock::TKind::Code:
                AppendLines(out, block.Text, "\n", "    ");
                break;
            case TGuideBlock::TKind::Quote:
                AppendQuote(out, block.Text, width);
                break;
            }
        }
    }
    out += Rules.size() == 1 ? "\nRegra\n" : "\nRegras\n";
    for (const std::string& rule : Rules)
        out.append("  ").append(rule).append("\n");
    return out;
}

const TRuleGuide& TRuleGuide::Instance() {
    static const TRuleGuide guide(RuleTexts());
    return guide;
}

const TRuleGuide& TRuleGuide::WithoutCommands() {
    static const TRuleGuide guide(RuleTexts(), false);
    return guide;
}

TRuleGuide::TRuleGuide(std::span<const std::string_view> files, bool commands) {
    TGuideReader reader(texts_, commands);
    for (const std::string_view file : files)
        reader.Read(file);
    for (std::size_t i = 0; i < texts_.size(); ++i)
        for (const std::string& rule : texts_[i].Rules)
            byRule_.try_emplace(rule, i);
}

const TRuleText* TRuleGuide::Find(std::string_view rule) const {
    const auto found = byRule_.find(rule);
    return found == byRule_.end() ? nullptr : &texts_[found->second];
}

} // namespace conferix
