#include "app/desktop/file_session.h"

#include "app/config.h"
#include "app/desktop/background.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/patience.h"
#include "app/line_layout.h"
#include "platform/platform.h"

namespace conferix {

namespace {

/// A line beyond this would keep the highlighting busy for seconds.
constexpr std::size_t kHighlightedLine = 1'000'000;

} // namespace

TReadFile ReadForShowing(const std::string& fileName) {
    const std::filesystem::path path = PathFromText(fileName);
    TReadFile read;
    try {
        read.File = TTissFile::Read(path, TXmlUndecodable::Guessed);
        read.Shown = read.File->Text();
    } catch (const EXmlEncoding& error) {
        read.Fault = error.Message();
        read.Shown = std::make_shared<const std::string>(ReadWholeFile(path));
    }
    std::size_t longest = LongestLine(*read.Shown);
    if (longest > kLongLine && read.File) {
        read.Shown = std::make_shared<const std::string>(FormatXml(*read.Shown));
        read.Formatted = true;
        longest = LongestLine(*read.Shown);
    } else {
        read.CrowdedLines = read.File && HasCrowdedLine(*read.Shown);
    }
    read.Highlighted = longest <= kHighlightedLine && read.File;
    return read;
}

std::vector<std::string> EnabledRules() {
    try {
        return TConfig::GetEnabledValidations(TConfig::DefaultFile());
    } catch (const EDataFolderUnknown&) {
        TConfig config; // who has no data folder has configured nothing
        config.SetDefaultInitialConfig();
        return config.EnabledValidations();
    }
}

TFileSession::TFileSession(std::shared_ptr<IValidadorController> controller, QString fileName,
                           QObject* parent)
    : QObject(parent), controller_(std::move(controller)), fileName_(std::move(fileName)) {
    controller_->SetKeepSuccesses(false);
}

void TFileSession::Read() {
    reading_ = true;
    RunBeside(
        this, [name = FromQt(fileName_)] { return ReadForShowing(name); },
        [this](TOutcome<TReadFile> outcome) {
            reading_ = false;
            try {
                emit ReadDone(outcome.Take());
            } catch (const EFile& error) {
                emit ReadFailed(ToQt(error.what()));
            } catch (const std::bad_alloc&) {
                emit ReadFailed(QString::fromUtf8(kOutOfMemory));
            }
        });
}

void TFileSession::Open(const TReadFile& read) {
    if (read.File)
        controller_->Load(FromQt(fileName_), *read.File);
}

void TFileSession::Validate(const TXmlPtr& text) {
    std::vector<std::string> enabled;
    try {
        enabled = EnabledRules();
    } catch (const EInvalidConfig& error) {
        emit NotValidated(ToQt(error.what()));
        return;
    }
    RunBeside(
        this,
        [run = controller_->BeginValidation(text)]() mutable {
            run->Run();
            return std::move(run);
        },
        [this, enabled = std::move(enabled)](TOutcome<std::unique_ptr<TValidationRun>> run) {
            controller_->EndValidation(run.Take(), enabled);
        });
}

void TFileSession::Save(const TXmlPtr& text, const QString& fileName, QWidget* owner) {
    auto run = controller_->BeginSave(text, FromQt(fileName));
    TPatience patience(owner, QStringLiteral("Salvando..."), TPatience::TStop::No);
    patience.Await([&run] {
        run->Run();
        return true;
    });
    controller_->EndSave(std::move(run));
    fileName_ = fileName;
}

} // namespace conferix
