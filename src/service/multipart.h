#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// One part of a form: a file, or the value of a field.
struct TFormPart {
    std::string Name;
    std::string FileName;
    bool IsFile = false;
    std::string_view Content; ///< a view into the body
};

/// The parts of a multipart/form-data body, in their order; a file that a browser's form leaves out (no name,
/// no content) is no part. The body has to live as long. Raises EHttpRefusal: 400 for a body that is not
/// built so or ends too early, 413 for more than `maxParts` parts, 415 for a part in a transfer encoding.
std::vector<TFormPart> ParseForm(std::string_view body, std::string_view boundary, std::size_t maxParts);

} // namespace conferix
