#pragma once

#include "app/file_state.h"
#include "model/arquivo_tiss.h"
#include "validation/validation.h"
#include "validator/tiss_validator.h"
#include "xml/xml_message.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace conferix {

/// What every event tells: the file and its state.
struct TValidatorArgs {
    std::string FileName;
    TFileStateFlags FileStateFlags;
};

struct TStateChangeArgs : TValidatorArgs {};

struct TFileArgs : TValidatorArgs {
    /// The XML text in UTF-8, shared with who opened or saves it.
    const std::string& Content() const { return *SharedContent; }
    std::shared_ptr<const std::string> SharedContent;
};

struct TFileOpenArgs : TFileArgs {};
struct TFileSaveArgs : TFileArgs {};

struct TFileCloseArgs : TValidatorArgs {
    bool CanClose = true; ///< an observer clears it to refuse
};

struct TValidateArgs : TValidatorArgs {
    bool ValidXml = false; ///< the text was well-formed XML
    /// False when something other than the file kept it from being judged: terminology, schema, a failure of
    /// the program.
    bool Verified = true;
    std::shared_ptr<const IArquivoTiss> ArquivoTiss; ///< none when the text did not parse
    /// The document, where it was read but is no file of a known kind and version.
    std::shared_ptr<const TXmlDocument> Unidentified;
    TXmlMessages ValidationMessages; ///< the messages to show
    /// The messages of switched-off rules, in their order.
    TXmlMessages HiddenMessages;
    /// All that the run found and listed, shown or not, in the order in which it was found.
    TXmlMessages AllMessages;
    TMessageCounts Counts;       ///< of what is to be shown, with what is not listed
    std::size_t HiddenCount = 0; ///< of what is hidden, likewise
    /// What goes beyond the limits of the lists, a rule an entry.
    std::vector<TUnkeptFindings> Unlisted;
    /// The schema is one that comes with the program in place of one that is not at hand.
    bool ApproximateSchema = false;
    bool OutOfMemory = false; ///< the run could not be finished, and so nothing is known of the file
    /// What it found right and only counted, a rule each.
    std::vector<TCountedSuccesses> CountedSuccesses;
    /// The schema file that was looked for and is not there; empty otherwise.
    std::filesystem::path MissingSchema;
};

/// An event with its observers, who are told in the order in which they subscribed. From inside a
/// notification an observer may subscribe, unsubscribe and cause the same event again:
/// - who subscribes is told from the next notification on, who is unsubscribed no more;
/// - a notification that is caused inside another is the newer one: it reaches all observers at once, and the
///   older one ends there, so that what an observer is told last is what happened last.
template<class Args>
class TValidatorEvent {
  public:
    using TObserver = std::function<void(Args&)>;

    /// Answers a number by which the observer is unsubscribed.
    int Subscribe(TObserver observer) {
        observers_.push_back({++lastObserver_, std::make_shared<const TObserver>(std::move(observer))});
        return lastObserver_;
    }
    void Unsubscribe(int observer) {
        std::erase_if(observers_, [&](const TEntry& entry) { return entry.Number == observer; });
    }

    /// Tells every observer before it returns; answers the arguments as they left them. An observer that
    /// raises does not keep the others from being told; the first exception is raised at the end.
    std::shared_ptr<const Args> Notify(Args args) {
        const auto own = std::make_shared<Args>(std::move(args));
        current_ = own;
        std::exception_ptr failure;
        const std::vector<TEntry> observers = observers_;
        for (const TEntry& entry : observers) {
            if (current_ != own)
                break;
            if (!IsSubscribed(entry.Number))
                continue;
            try {
                (*entry.Observer)(*own);
            } catch (...) {
                if (failure == nullptr)
                    failure = std::current_exception();
            }
        }
        if (failure != nullptr)
            std::rethrow_exception(failure);
        return own;
    }
    /// Arguments of the last notification; they stay as they are until the next one.
    const Args& Current() const { return *current_; }

  private:
    struct TEntry {
        int Number;
        std::shared_ptr<const TObserver> Observer; ///< kept alive while it is being told
    };

    bool IsSubscribed(int observer) const {
        return std::any_of(observers_.begin(), observers_.end(),
                           [&](const TEntry& entry) { return entry.Number == observer; });
    }

    std::shared_ptr<const Args> current_ = std::make_shared<const Args>();
    std::vector<TEntry> observers_;
    int lastObserver_ = 0;
};

/// The events of one open file.
struct TValidatorEvents {
    TValidatorEvent<TStateChangeArgs> OnStateChange;
    TValidatorEvent<TFileOpenArgs> OnFileOpen;
    TValidatorEvent<TFileSaveArgs> OnFileSave;
    TValidatorEvent<TFileCloseArgs> OnFileClose;
    TValidatorEvent<TValidateArgs> OnValidate;
};

} // namespace conferix
