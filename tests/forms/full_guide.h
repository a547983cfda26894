// A guide with every element that a schema knows, as often and as long as it may be.
#pragma once

#include "platform/utf8.h"
#include "support/generated_lot.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace conferix {

/// Writes guides of one version. Values differ from one another, words of texts wherever they stand.
class TFullGuide {
  public:
    /// `items`: paths below the guide of the elements that are lines of tables.
    TFullGuide(const TSchemaSet& set, std::set<std::string> items)
        : items_(std::move(items)), generator_(set, 1) {}

    /// A guide of the first of these names that the version has; with so many items.
    std::string Xml(const TSchemaSet& set, std::span<const std::string_view> names, std::size_t items) {
        itemCount_ = items;
        for (const TSchemaElement* root : set.GlobalElements())
            for (const std::string_view name : names)
                if (const TSchemaElement* guide = Search(*root, name, 0)) {
                    text_.clear();
                    Write(*guide, "", false);
                    return text_;
                }
        ADD_FAILURE() << names.front();
        return {};
    }

  private:
    static constexpr std::uint32_t kRepeats = 4; ///< of what is no line of a table

    static const TSchemaElement* Search(const TSchemaElement& from, std::string_view name, int depth) {
        if (from.Name == name)
            return &from;
        if (from.ComplexType == nullptr || depth > 5)
            return nullptr;
        for (const TSchemaPosition& position : from.ComplexType->Automaton.Positions)
            if (position.Element != nullptr)
                if (const TSchemaElement* found = Search(*position.Element, name, depth + 1))
                    return found;
        return nullptr;
    }

    /// `path`: of the element below the guide. `inItem`: it stands in one of many items.
    void Write(const TSchemaElement& element, const std::string& path, bool inItem) {
        text_ += '<' + element.Name + '>';
        const TSchemaComplexType* type = element.ComplexType;
        if (type == nullptr || type->Content == TSchemaContent::Simple)
            text_ += Value(type == nullptr ? *element.SimpleType : *type->SimpleContent);
        else
            WriteChildren(*type, path, inItem);
        text_ += "</" + element.Name + ">\n";
    }

    void WriteChildren(const TSchemaComplexType& type, const std::string& path, bool inItem) {
        const TSchemaAutomaton& automaton = type.Automaton;
        if (automaton.IsAll)
            for (const TSchemaPosition& position : automaton.Positions)
                Write(*position.Element, path + (path.empty() ? "" : "/") + position.Element->Name, inItem);
        if (automaton.IsAll || automaton.Positions.empty())
            return;
        std::uint32_t state = 0;
        while (true) {
            const auto follow = automaton.Follow(state);
            const auto next = std::ranges::find_if(follow, [&](std::uint32_t at) { return at >= state; });
            if (next == follow.end())
                return;
            const TSchemaPosition& position = automaton.Positions[*next];
            const bool loops = std::ranges::count(automaton.Follow(*next + 1), *next) != 0;
            state = *next + 1;
            if (position.Element == nullptr || position.Element->Name.starts_with("assinatura"))
                continue;
            const std::string below = path + (path.empty() ? "" : "/") + position.Element->Name;
            const std::uint32_t most = loops ? kSchemaUnbounded : position.Max;
            const bool item = items_.contains(below) && most > 1;
            const std::size_t count = !item    ? std::min(most, kRepeats)
                                      : inItem ? 1
                                               : std::min<std::size_t>(most, itemCount_);
            for (std::size_t i = 0; i < count; ++i)
                Write(*position.Element, below, inItem || (item && count > 1));
        }
    }

    std::string Value(const TSchemaSimpleType& type) {
        std::string value = LongValue(type);
        if (type.Check(value))
            value = generator_.Value(type);
        return value;
    }

    std::string LongValue(const TSchemaSimpleType& type) {
        const TSchemaFacets& facets = type.Facets;
        if (!facets.Codes.empty())
            return *std::ranges::max_element(facets.Codes, {}, &std::string::size);
        const std::size_t number = ++count_;
        switch (type.Kind) {
        case TSchemaValueKind::Boolean:
            return "true";
        case TSchemaValueKind::Date:
            return fmt::format("20{:02}-{:02}-{:02}", number / 336 % 90 + 10, number / 28 % 12 + 1,
                               number % 28 + 1);
        case TSchemaValueKind::Time:
            return fmt::format("23:{:02}:59", number % 60);
        case TSchemaValueKind::DateTime:
            return fmt::format("2024-{:02}-{:02}T23:59:59", number / 28 % 12 + 1, number % 28 + 1);
        case TSchemaValueKind::Integer:
        case TSchemaValueKind::Decimal: {
            const std::uint32_t decimals = facets.FractionDigits.value_or(0);
            const std::uint32_t digits = facets.TotalDigits.value_or(8) - decimals;
            return Digits(number, digits) + (decimals == 0 ? "" : "." + std::string(decimals, '9'));
        }
        default:
            return Text(number, facets.Length.value_or(facets.MaxLength.value_or(20)));
        }
    }

    /// As many digits as asked for, the last ones those of a number.
    static std::string Digits(std::size_t number, std::size_t count) {
        const std::string digits = std::string(count, '9') + fmt::format("{:06}", number);
        std::string last = digits.substr(digits.size() - std::min<std::size_t>(count, digits.size()));
        last.front() = '9';
        return last;
    }

    /// Words of a text, of which the first ones differ from those of all others.
    static std::string Text(std::size_t number, std::size_t length) {
        constexpr std::size_t kLongestNumber = 20;
        if (length <= kLongestNumber)
            return Digits(number, length);
        std::string text;
        for (std::size_t word = 0; CountCharacters(text) < length; ++word)
            text += fmt::format("{}{}\u00C7{} ", word % 3 == 0 ? "Á" : "M", number, word);
        text.resize(BytesOfCharacters(text, length));
        if (text.ends_with(' '))
            text.back() = 'X';
        return text;
    }

    std::set<std::string> items_;
    TSchemaGenerator generator_;
    std::string text_;
    std::size_t itemCount_ = 0;
    std::size_t count_ = 0;
};

} // namespace conferix
