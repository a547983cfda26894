#include "platform/spool_buffer.h"

#include "platform/platform.h"
#include "platform/spool_file.h"

#include <utility>

namespace conferix {

TSpoolBuffer::TSpoolBuffer() : file_(OpenSpoolFile()) {}

std::string TSpoolBuffer::Take() {
    if (file_ == nullptr)
        return std::move(memory_);
    std::string bytes(size_, '\0');
    if (full_ || std::fflush(file_.get()) != 0 || std::fseek(file_.get(), 0, SEEK_SET) != 0 ||
        std::fread(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size())
        throw EFileNotWritten(std::filesystem::temp_directory_path(),
                              "o que se grava não cabe na pasta de arquivos temporários");
    return bytes;
}

TSpoolBuffer::int_type TSpoolBuffer::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof()))
        return traits_type::not_eof(c);
    const char character = traits_type::to_char_type(c);
    return xsputn(&character, 1) == 1 ? c : traits_type::eof();
}

std::streamsize TSpoolBuffer::xsputn(const char* text, std::streamsize size) {
    const auto bytes = static_cast<std::size_t>(size);
    if (file_ == nullptr) {
        memory_.append(text, bytes);
        return size;
    }
    const std::size_t written = std::fwrite(text, 1, bytes, file_.get());
    size_ += written;
    full_ = full_ || written != bytes;
    return static_cast<std::streamsize>(written);
}

} // namespace conferix
