#include "app/desktop/window_settings.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "platform/platform.h"

namespace conferix {

std::unique_ptr<QSettings> WindowSettings() {
    try {
        return std::make_unique<QSettings>(ToQt(PathText(DataFolder() / "janela.ini")), QSettings::IniFormat);
    } catch (const EDataFolderUnknown&) {
        return std::make_unique<QSettings>(QStringLiteral("Brenvo"), QStringLiteral("Conferix"));
    }
}

} // namespace conferix
