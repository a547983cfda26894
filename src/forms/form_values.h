#pragma once

#include "forms/form_template.h"

#include <string>
#include <string_view>

namespace conferix {

/// A value of a file as a form shows it; what has not the form of its kind stays as it is.
std::string FormatFormValue(TFormFormat format, std::string_view value);

} // namespace conferix
