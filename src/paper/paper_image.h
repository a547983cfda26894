// Pictures on pages, such as a clinic's logo.
#pragma once

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace conferix {

/// A picture that cannot be read; the text says why.
class EInvalidImage : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct TPaperImage {
    std::size_t Width = 0; ///< in pixels
    std::size_t Height = 0;
    std::string Pixels;         ///< red, green and blue, a byte each, in rows from the top
    std::string File;           ///< the bytes that it was read from
    std::string_view MediaType; ///< of these
};

/// Reads the bytes of a PNG or JPEG file; what is transparent stands on white. Raises EInvalidImage, also for
/// a picture of more than 16 million pixels.
std::shared_ptr<const TPaperImage> ReadImage(std::string bytes);

} // namespace conferix
