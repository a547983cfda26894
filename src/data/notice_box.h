// The inbox of the program: notices to the user, kept in the application database.
#pragma once

#include "data/quiet_database.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

enum class TNoticeLevel : std::uint8_t { Information, Warning, Important };

/// Name of a level: informacao, aviso or importante.
std::string_view NameOf(TNoticeLevel level);
/// The level of a name; Information for any other.
TNoticeLevel NoticeLevelOf(std::string_view name);

/// One notice. Nothing of what a file says stands in it.
struct TNotice {
    std::string Subject = {}; ///< what kind of thing it is about
    std::string Key = {};     ///< which of these; of one subject and key there is one notice
    std::string Title = {};
    std::string Text = {};
    TNoticeLevel Level = TNoticeLevel::Information;
    std::string Address = {}; ///< https, opened only when the user asks for it; empty for none
    std::string Date = {};    ///< YYYY-MM-DD, or with HH:MM:SS, local time; empty: now
    std::int64_t Number = 0;  ///< by which users name it; set by the box and never given twice
    bool Read = false;
};

/// The notices: unread, read, and deleted ones, which are kept out of sight so that they do not come back.
/// Writes only what is new. A database that cannot be used stops nobody's work (TQuietDatabase).
class TNoticeBox {
  public:
    static constexpr std::int64_t kKept = 1'000; ///< older ones are forgotten

    /// `onFailure`: told once, with a text for the user.
    explicit TNoticeBox(TDatabase database, std::function<void(const std::string&)> onFailure = {});

    /// Adds a notice, unless there is one of its subject and key, read, deleted or not.
    void Add(const TNotice& notice);
    /// The same for all that holds of a subject now: what was told of it before and holds no longer goes.
    void SetAll(std::string_view subject, std::span<const TNotice> notices);

    /// Newest first, without the deleted ones.
    std::vector<TNotice> Notices(bool alsoRead);
    /// How many are neither read nor deleted.
    std::int64_t Unread();
    /// Marks a notice as read, or deletes it; false where there is none of that number.
    bool MarkRead(std::int64_t number);
    bool Delete(std::int64_t number);

  private:
    bool Change(const char* sql, std::int64_t number);

    TQuietDatabase database_;
};

} // namespace conferix
