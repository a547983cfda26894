// What the program has to tell its user beside the work at hand, as notices for the inbox.
#pragma once

#include "app/updater.h"
#include "data/db_connection_factory.h"
#include "data/notice_box.h"

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace conferix {

/// Puts notices into the inbox of the data folder. Where that fails there are none, and nothing else happens.
void Notify(const std::function<void(TNoticeBox&)>& note);

/// All that holds of some subjects now.
using TNoticesOfSubjects = std::vector<std::pair<std::string, std::vector<TNotice>>>;

/// What files are judged by: the newest versions of the standard that the program knows, the tables of the
/// terminology at hand, and those imported more than six months ago. A terminology that cannot be read is
/// told nothing of.
TNoticesOfSubjects StateNotices(const TDBConnectionFactory& terminology);
/// Tells it. What held before and does so no longer goes.
void NoteState(TNoticeBox& box, const TNoticesOfSubjects& state);

/// Packages that a list of updates offers or that were installed, and the notices of that list.
void NoteUpdates(TNoticeBox& box, const std::vector<TPackage>& packages,
                 const std::vector<TNotice>& published);

/// How a validation of many files ended.
struct TBatchOutcome {
    std::string What; ///< name of a folder, or empty
    std::size_t Valid = 0;
    std::size_t Invalid = 0;
    std::size_t NotVerified = 0;
};
void NoteBatch(TNoticeBox& box, const TBatchOutcome& batch);

/// A file that was converted with points left open.
struct TOpenConversion {
    std::string File; ///< its name without folder
    std::string To;   ///< version
    std::size_t OpenPoints = 0;
};
void NoteConversions(TNoticeBox& box, const std::vector<TOpenConversion>& files);

} // namespace conferix
