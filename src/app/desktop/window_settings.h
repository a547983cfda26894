#pragma once

#include <QSettings>

#include <memory>

namespace conferix {

/// What the window and its dialogs remember from one start to the next.
std::unique_ptr<QSettings> WindowSettings();

} // namespace conferix
