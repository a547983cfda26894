#include "paper/paper_image.h"

#include <fmt/format.h>
#include <png.h>
#include <turbojpeg.h>

#include <type_traits>
#include <utility>

namespace conferix {

namespace {

constexpr std::size_t kMostPixels = 16'000'000;
constexpr std::string_view kPngStart = "\x89PNG";
constexpr std::string_view kJpegStart = "\xFF\xD8\xFF";

const unsigned char* BytesOf(const TPaperImage& image) {
    return reinterpret_cast<const unsigned char*>(image.File.data());
}

/// Makes room for the pixels.
unsigned char* Resize(TPaperImage& image, std::size_t width, std::size_t height) {
    if (width == 0 || height == 0 || width > kMostPixels / height)
        throw EInvalidImage(
            fmt::format("tem {} x {} pontos; reduza-a a no máximo 16 milhões de pontos", width, height));
    image.Width = width;
    image.Height = height;
    image.Pixels.resize(width * height * 3);
    return reinterpret_cast<unsigned char*>(image.Pixels.data());
}

[[noreturn]] void FailDamaged(std::string_view reason) {
    throw EInvalidImage(fmt::format("está danificada ({})", reason));
}

void ReadPng(TPaperImage& image) {
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    const std::unique_ptr<png_image, decltype(&png_image_free)> freed(&png, &png_image_free);
    if (png_image_begin_read_from_memory(&png, BytesOf(image), image.File.size()) == 0)
        FailDamaged(png.message);
    unsigned char* const pixels = Resize(image, png.width, png.height);
    png.format = PNG_FORMAT_RGB;
    constexpr png_color kWhite = {255, 255, 255};
    if (png_image_finish_read(&png, &kWhite, pixels, 0, nullptr) == 0)
        FailDamaged(png.message);
}

void ReadJpeg(TPaperImage& image) {
    const std::unique_ptr<std::remove_pointer_t<tjhandle>, decltype(&tjDestroy)> decoder(tjInitDecompress(),
                                                                                         &tjDestroy);
    int width = 0;
    int height = 0;
    int sampling = 0;
    int colours = 0;
    const auto size = static_cast<unsigned long>(image.File.size());
    if (tjDecompressHeader3(decoder.get(), BytesOf(image), size, &width, &height, &sampling, &colours) != 0)
        FailDamaged(tjGetErrorStr2(decoder.get()));
    if (colours == TJCS_CMYK || colours == TJCS_YCCK)
        throw EInvalidImage("tem as cores de impressão (CMYK); grave-a em RGB");
    unsigned char* const pixels =
        Resize(image, static_cast<std::size_t>(width), static_cast<std::size_t>(height));
    if (tjDecompress2(decoder.get(), BytesOf(image), size, pixels, width, 0, height, TJPF_RGB, 0) != 0)
        FailDamaged(tjGetErrorStr2(decoder.get()));
}

} // namespace

std::shared_ptr<const TPaperImage> ReadImage(std::string bytes) {
    auto image = std::make_shared<TPaperImage>();
    image->File = std::move(bytes);
    if (image->File.starts_with(kPngStart)) {
        image->MediaType = "image/png";
        ReadPng(*image);
    } else if (image->File.starts_with(kJpegStart)) {
        image->MediaType = "image/jpeg";
        ReadJpeg(*image);
    } else {
        throw EInvalidImage("não é PNG nem JPEG");
    }
    return image;
}

} // namespace conferix
