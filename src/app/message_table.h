// The list of messages as a user arranges it.
#pragma once

#include "app/message_groups.h"
#include "xml/xml_message.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace conferix {

enum class TMessageColumn : std::uint8_t { Severity, Line, Guide, Field, Rule, Text, Corrections };
inline constexpr std::size_t kMessageColumns = 7;

enum class TMessageGrouping : std::uint8_t { None, Cause, Rule };

/// What is known of a list of messages to sort, filter and group it at once. Immutable; made in any thread.
class TMessageDigest {
  public:
    explicit TMessageDigest(TXmlMessages messages);

    const TXmlMessages& Messages() const { return messages_; }
    /// Groups of one cause, in the order in which users read them.
    const std::vector<TMessageGroup>& Causes() const { return causes_; }
    /// Place of a message among all when they are sorted by a column; equal ones share it.
    std::uint32_t Rank(TMessageColumn column, std::size_t message) const {
        return ranks_[static_cast<std::size_t>(column)][message];
    }
    std::uint32_t CauseOf(std::size_t message) const { return causeOf_[message]; }
    /// Guide, field, rule and text in lower case without accents, to be searched.
    const std::string& Key(std::size_t message) const { return keys_[message]; }
    /// The rules that found something, sorted by description, and the guides, each once. The first rule has
    /// rank 1; 0 is for what no rule found.
    const std::vector<const TValidationIdentity*>& Rules() const { return rules_; }
    const std::vector<std::string>& Guides() const { return guides_; }
    const TMessageCounts& Counts() const { return counts_; }

  private:
    void RankAll();

    TXmlMessages messages_;
    std::vector<TMessageGroup> causes_;
    std::vector<std::uint32_t> causeOf_;
    std::array<std::vector<std::uint32_t>, kMessageColumns> ranks_;
    std::vector<std::string> keys_;
    std::vector<const TValidationIdentity*> rules_;
    std::vector<std::string> guides_;
    TMessageCounts counts_;
};

/// What of a list is shown.
struct TMessageFilter {
    std::array<bool, 5> Hidden{}; ///< severities that are left out, by TMessageType
    std::string Rule;             ///< name; empty: all
    std::string Guide;            ///< number; empty: all
    std::string Text;             ///< words that occur, whatever their case and accents
    std::vector<bool> Left;       ///< messages that are left out one by one; empty: none

    bool operator==(const TMessageFilter&) const = default;
};

/// The rows of the list: groups of messages or single ones, filtered and sorted. Rows and members are
/// 0-based; a message is named by its index in the list of the digest.
class TMessageTable {
  public:
    TMessageTable();
    void SetDigest(std::shared_ptr<const TMessageDigest> digest);
    void SetFilter(TMessageFilter filter);
    void SetGrouping(TMessageGrouping grouping);
    /// Nothing: the order of the messages, or of their groups.
    void Sort(std::optional<TMessageColumn> column, bool descending);

    const TMessageDigest& Digest() const { return *digest_; }
    const TXmlMessages& Messages() const { return digest_->Messages(); }
    const TMessageFilter& Filter() const { return filter_; }
    TMessageGrouping Grouping() const { return grouping_; }

    std::size_t RowCount() const { return rows_.size(); }
    /// Messages of a row; 1 for a message that stands by itself.
    std::size_t MemberCount(std::size_t row) const { return rows_[row].End - rows_[row].Start; }
    std::size_t Member(std::size_t row, std::size_t member) const {
        return shown_[rows_[row].Start + member];
    }
    /// Number of messages that the filter lets through, in the order in which they are shown.
    std::size_t ShownCount() const { return shown_.size(); }
    std::size_t Shown(std::size_t place) const { return shown_[place]; }

    struct TPlace {
        std::size_t Row;
        std::size_t Member;
    };
    /// Where a message stands; nothing for one that is left out.
    std::optional<TPlace> Find(std::size_t message) const;
    /// Text of a row of several messages.
    std::string GroupText(std::size_t row) const;

  private:
    struct TRow {
        std::uint32_t Start;
        std::uint32_t End;
    };
    void Arrange();
    bool Admits(std::size_t message, std::uint32_t rule, const std::vector<std::string>& words) const;
    std::uint32_t GroupOf(std::size_t message) const;

    std::shared_ptr<const TMessageDigest> digest_;
    TMessageFilter filter_;
    TMessageGrouping grouping_ = TMessageGrouping::Cause;
    std::optional<TMessageColumn> column_;
    bool descending_ = false;
    std::vector<std::uint32_t> shown_;
    std::vector<TRow> rows_;
};

/// Position of a severity in lists: the gravest first.
std::uint32_t SeverityRank(TMessageType type);
/// A text in lower case without accents, for comparing and searching; signs stay.
std::string SearchText(std::string_view text);

} // namespace conferix
