#pragma once

#include "app/file_state.h"
#include "model/arquivo_tiss.h"
#include "xml/xml_message.h"

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
    bool ValidXml = false;                           ///< the text was well-formed XML
    std::shared_ptr<const IArquivoTiss> ArquivoTiss; ///< none when the text did not parse
    TXmlMessages ValidationMessages;                 ///< the messages to show
    /// The messages of switched-off rules, in their order.
    TXmlMessages HiddenMessages;
    /// All that the run found, shown or not, in the order in which it was found.
    TXmlMessages AllMessages;
    /// The schema file that was looked for and is not there; empty otherwise.
    std::filesystem::path MissingSchema;
};

/// An event with its observers, who are told in the order in which they subscribed.
template<class Args>
class TValidatorEvent {
  public:
    using TObserver = std::function<void(Args&)>;

    void Subscribe(TObserver observer) { observers_.push_back(std::move(observer)); }
    /// Tells every observer before it returns; answers the arguments as they left them.
    const Args& Notify(Args args) {
        current_ = std::move(args);
        for (const TObserver& observer : observers_)
            observer(current_);
        return current_;
    }
    /// Arguments of the last notification.
    const Args& Current() const { return current_; }

  private:
    Args current_;
    std::vector<TObserver> observers_;
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
