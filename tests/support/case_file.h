// Tables of cases in text files, so that what goes in and what is expected reads without C++ around it.
//
//   # A comment.
//   @vazio O valor de <{1}> está vazio.        a text with a name; {1}, {2}... stand for its arguments
//
//   [section]                                   what the cases below share, in the words of their test
//
//   > b=1 => b=                                 an input: two texts with an arrow between them, or one text
//   > c=2
//   [Linha: 1] @vazio(b)                        the lines expected, in order
//
//   > b=1 => b=2
//   (nada)                                      no line is expected
//
// A case ends at a blank line. In all lines \n, \r, \t, \s (a blank) and \xFF (a byte) are escapes. Arguments
// are separated by ";" with or without blanks after it; one that is left out is empty.
#pragma once

#include "support/test_files.h"

#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix::tests {

/// One case of a file.
struct TCase {
    std::string Place;                                       ///< "file.casos:12", for failures
    std::string Section;                                     ///< as in the brackets; empty before the first
    std::vector<std::pair<std::string, std::string>> Inputs; ///< the second text is empty without an arrow
    std::vector<std::string> Expected;
};

inline std::ostream& operator<<(std::ostream& out, const TCase& c) {
    out << c.Place;
    for (const auto& [first, second] : c.Inputs)
        out << "\n> " << first << " => " << second;
    return out;
}

/// Reads a file of cases.
class TCaseReader {
  public:
    static std::vector<TCase> Read(const std::filesystem::path& file) {
        TCaseReader reader;
        std::ifstream stream(file);
        EXPECT_TRUE(stream) << file;
        std::string line;
        for (int number = 1; std::getline(stream, line); ++number)
            reader.Take(line, file.filename().string() + ":" + std::to_string(number));
        reader.EndCase();
        EXPECT_FALSE(reader.cases_.empty()) << file;
        return std::move(reader.cases_);
    }

  private:
    void Take(std::string_view line, const std::string& place) {
        if (line.empty()) {
            EndCase();
        } else if (line.front() == '@' && !open_) {
            const std::size_t blank = line.find(' ');
            ASSERT_NE(blank, std::string_view::npos) << place;
            texts_[std::string(line.substr(1, blank - 1))] = Expanded(line.substr(blank + 1), place);
        } else if (line.front() == '[' && !open_) {
            section_ = Unescaped(Expanded(line.substr(1, line.rfind(']') - 1), place));
        } else if (line.starts_with("> ")) {
            if (!open_)
                case_ = {place, section_, {}, {}};
            open_ = true;
            EXPECT_TRUE(case_.Expected.empty()) << place << ": an input after what is expected";
            TakeInput(line.substr(2), place);
        } else if (line.front() != '#') {
            EXPECT_TRUE(open_) << place << ": expected lines without an input";
            answered_ = true;
            if (line != "(nada)")
                case_.Expected.push_back(Unescaped(Expanded(line, place)));
        }
    }

    void TakeInput(std::string_view text, const std::string& place) {
        const std::size_t arrow = text.find(" =>");
        std::string second;
        if (arrow != std::string_view::npos && arrow + 4 <= text.size())
            second = text.substr(arrow + 4);
        case_.Inputs.emplace_back(Unescaped(Expanded(text.substr(0, arrow), place)),
                                  Unescaped(Expanded(second, place)));
    }

    void EndCase() {
        if (open_) {
            EXPECT_TRUE(answered_) << case_.Place << ": nothing is expected; say (nada)";
            cases_.push_back(std::move(case_));
        }
        open_ = answered_ = false;
    }

    /// Puts the named texts in the place of "@name" and "@name(a; b)".
    std::string Expanded(std::string_view line, const std::string& place) const {
        std::string out;
        for (std::size_t at = 0; at < line.size();) {
            std::size_t end = at + 1;
            while (line[at] == '@' && end < line.size() &&
                   (std::isalnum(static_cast<unsigned char>(line[end])) != 0))
                ++end;
            if (end == at + 1) {
                out += line[at++];
                continue;
            }
            const auto text = texts_.find(std::string(line.substr(at + 1, end - at - 1)));
            EXPECT_NE(text, texts_.end()) << place << ": " << line.substr(at, end - at);
            std::string put = text != texts_.end() ? text->second : std::string();
            if (end < line.size() && line[end] == '(') {
                const std::size_t close = line.find(')', end);
                std::istringstream arguments{std::string(line.substr(end + 1, close - end - 1))};
                std::string argument;
                for (int n = 1; std::getline(arguments >> std::ws, argument, ';'); ++n)
                    Replace(put, "{" + std::to_string(n) + "}", Expanded(argument, place));
                for (char n = '1'; n <= '9'; ++n) // arguments that were left out
                    Replace(put, {'{', n, '}'}, "");
                end = close + 1;
            }
            out += put;
            at = end;
        }
        return out;
    }

    static void Replace(std::string& text, const std::string& what, const std::string& with) {
        for (std::size_t at = text.find(what); at != std::string::npos;
             at = text.find(what, at + with.size()))
            text.replace(at, what.size(), with);
    }

    static std::string Unescaped(std::string_view text) {
        std::string out;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] != '\\' || i + 1 == text.size()) {
                out += text[i];
                continue;
            }
            if (text[i + 1] == 'x') {
                out += static_cast<char>(std::stoi(std::string(text.substr(i + 2, 2)), nullptr, 16));
                i += 3;
                continue;
            }
            static constexpr std::string_view kLetters = "nrts";
            static constexpr std::string_view kMeant = "\n\r\t ";
            const std::size_t which = kLetters.find(text[++i]);
            out += which == std::string_view::npos ? text[i] : kMeant[which];
        }
        return out;
    }

    std::map<std::string, std::string> texts_;
    std::string section_;
    TCase case_;
    bool open_ = false;
    bool answered_ = false;
    std::vector<TCase> cases_;
};

/// Compares what was found in a case with what it expects, line by line.
inline void ExpectLines(const TCase& c, const std::vector<std::string>& found) {
    const auto joined = [](const std::vector<std::string>& lines) {
        std::string text;
        for (const std::string& line : lines)
            text += line + "\n";
        return text;
    };
    EXPECT_EQ(joined(found), joined(c.Expected)) << c;
}

/// An example with edits, from the `first` input of the case on: each replaces the first place of a text;
/// "2x" before the text means the first two, "*x" all.
inline std::string EditedExample(const std::string& name, const TCase& c, std::size_t first = 0) {
    std::string bytes = ReadTestFile(Example(name));
    for (std::size_t i = first; i < c.Inputs.size(); ++i) {
        auto [from, to] = c.Inputs[i];
        int times = 1;
        const bool all = from.starts_with("*x ");
        if (from.substr(1, 2) == "x ") {
            times = all ? 1 : from[0] - '0';
            from.erase(0, 3);
        }
        for (std::size_t at = 0; times > 0; times -= all ? 0 : 1, at += to.size()) {
            at = bytes.find(from, at);
            if (at == std::string::npos) {
                EXPECT_TRUE(all) << c << ": " << from;
                break;
            }
            bytes.replace(at, from.size(), to);
        }
    }
    return bytes;
}

/// The cases of a file below tests/.
inline std::vector<TCase> Cases(const std::string& name) {
    return TCaseReader::Read(std::filesystem::path(CONFERIX_FONTE) / "tests" / name);
}

} // namespace conferix::tests
