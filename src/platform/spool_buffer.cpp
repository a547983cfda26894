#include "platform/spool_buffer.h"

#include "platform/platform.h"
#include "platform/spool_file.h"

#include <utility>

namespace conferix {

TSpoolBuffer::TSpoolBuffer() : file_(OpenSpoolFile()) {
    if (file_ != nullptr)
        std::setvbuf(file_.get(), nullptr, _IONBF, 0); // what is full shows in the call that fills it
}

std::string TSpoolBuffer::Take() {
    if (file_ != nullptr)
        BackToMemory(0);
    return std::move(memory_);
}

void TSpoolBuffer::MoveToFile() {
    const std::size_t written = std::fwrite(memory_.data(), 1, memory_.size(), file_.get());
    size_ += written;
    if (written == memory_.size())
        memory_.clear();
    else
        BackToMemory(written);
}

void TSpoolBuffer::BackToMemory(std::size_t done) {
    std::string bytes(size_, '\0');
    if (std::fseek(file_.get(), 0, SEEK_SET) != 0 ||
        std::fread(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size())
        throw EFileNotRead(std::filesystem::temp_directory_path(),
                           "o arquivo temporário não pôde ser lido de volta");
    memory_ = bytes.append(memory_, done);
    file_.reset();
}

TSpoolBuffer::int_type TSpoolBuffer::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof()))
        return traits_type::not_eof(c);
    const char character = traits_type::to_char_type(c);
    return xsputn(&character, 1) == 1 ? c : traits_type::eof();
}

std::streamsize TSpoolBuffer::xsputn(const char* text, std::streamsize size) {
    constexpr std::size_t kPiece = std::size_t{64} * 1024;
    memory_.append(text, static_cast<std::size_t>(size));
    if (file_ != nullptr && memory_.size() >= kPiece)
        MoveToFile();
    return size;
}

} // namespace conferix
