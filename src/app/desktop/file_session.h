// One open file without its window: what happens beside, and what comes back to its controller.
#pragma once

#include "app/tiss_file.h"
#include "app/validador_controller.h"

#include <QObject>

#include <memory>
#include <optional>
#include <string>

namespace conferix {

/// A file as it was read for being shown.
struct TReadFile {
    std::optional<TTissFile> File;            ///< nothing where its bytes are no text
    std::shared_ptr<const std::string> Shown; ///< the text, or the bytes as they are
    std::shared_ptr<const TXmlMessage> Fault; ///< why its bytes are no text
    bool Formatted = false;                   ///< Shown is broken into lines, other than the file
    bool CrowdedLines = false;                ///< it would be read more easily so
    bool Highlighted = true;                  ///< its lines are short enough for it
};
/// Reads a file; a text of enormous lines is broken into readable ones. Raises EFileNotRead.
TReadFile ReadForShowing(const std::string& fileName);

/// Opens, validates, saves and closes a file through its controller.
class TFileSession : public QObject {
    Q_OBJECT

  public:
    using TXmlPtr = std::shared_ptr<const std::string>;

    TFileSession(std::shared_ptr<IValidadorController> controller, QString fileName, QObject* parent);

    IValidadorController& Controller() const { return *controller_; }
    const std::shared_ptr<IValidadorController>& SharedController() const { return controller_; }
    /// Name of the file, with its folder.
    const QString& FileName() const { return fileName_; }
    bool IsOpen() const { return controller_->FileStateFlags().Contains(TFileStateFlag::sfAberto); }
    bool IsReading() const { return reading_; }
    bool IsValidating() const { return controller_->FileStateFlags().Contains(TFileStateFlag::sfValidando); }

    /// Reads the file beside; Read or ReadFailed is told. A file that is open is closed without asking.
    void Read();
    /// Gives the controller what was read: its events follow.
    void Open(const TReadFile& read);
    /// Validates beside; the controller's events tell the rest.
    void Validate(const TXmlPtr& text);
    /// Saves beside under a name, which becomes the file's; answers when it is done. Raises what the
    /// controller raises.
    void Save(const TXmlPtr& text, const QString& fileName, QWidget* owner);

  signals:
    void ReadDone(const conferix::TReadFile& read);
    void ReadFailed(const QString& reason);
    /// The configuration of rules cannot be read: nothing is validated.
    void NotValidated(const QString& reason);

  private:
    std::shared_ptr<IValidadorController> controller_;
    QString fileName_;
    bool reading_ = false;
};

/// Names of the rules that are switched on. Raises EInvalidConfig.
std::vector<std::string> EnabledRules();

} // namespace conferix
