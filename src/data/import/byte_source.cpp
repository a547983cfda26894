#include "data/import/byte_source.h"

#include "data/import/import_errors.h"
#include "platform/portable_name.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace conferix {

namespace fs = std::filesystem;

TFileSource::TFileSource(const fs::path& file) : file_(file), stream_(file, std::ios::binary) {
    if (NamesDevice(file)) {
        throw EInvalidPublication(file, kDeviceReason);
    }
    if (!stream_) {
        throw EInvalidPublication(file, ReasonText(std::error_code(errno, std::generic_category())));
    }
}

std::size_t TFileSource::Read(char* to, std::size_t count) {
    stream_.read(to, static_cast<std::streamsize>(count));
    if (stream_.bad()) {
        throw EInvalidPublication(file_, ReasonText(std::make_error_code(std::errc::io_error)));
    }
    return static_cast<std::size_t>(stream_.gcount());
}

TPeekSource::TPeekSource(IByteSource& source, std::size_t count) : source_(source), head_(count, '\0') {
    head_.resize(source.Read(head_.data(), count));
}

std::size_t TPeekSource::Read(char* to, std::size_t count) {
    const std::size_t fromHead = std::min(count, head_.size() - std::min(given_, head_.size()));
    std::memcpy(to, head_.data() + (fromHead > 0 ? given_ : 0), fromHead);
    given_ += fromHead;
    return fromHead == count ? count : fromHead + source_.Read(to + fromHead, count - fromHead);
}

namespace {

struct TCloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

class TUtf8Source : public IByteSource {
  public:
    TUtf8Source(IByteSource& source, const char* encoding, const fs::path& name)
        : source_(source), from_(Open(encoding, name)), to_(Open("UTF-8", name)), name_(name) {}

    std::size_t Read(char* to, std::size_t count) override {
        char* target = to;
        char* const end = to + count;
        while (target != end && !done_) {
            if (next_ == limit_ && !ended_) {
                const std::size_t got = source_.Read(bytes_.data(), bytes_.size());
                next_ = bytes_.data();
                limit_ = next_ + got;
                ended_ = got == 0;
            }
            UErrorCode status = U_ZERO_ERROR;
            ucnv_convertEx(to_.get(), from_.get(), &target, end, &next_, limit_, pivot_.data(), &pivotSource_,
                           &pivotTarget_, pivot_.data() + pivot_.size(), false,
                           static_cast<UBool>(ended_ ? 1 : 0), &status);
            if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR) {
                throw EInvalidPublication(name_, "o texto não pôde ser decodificado");
            }
            done_ = ended_ && status != U_BUFFER_OVERFLOW_ERROR;
            if (status == U_BUFFER_OVERFLOW_ERROR) {
                break;
            }
        }
        return static_cast<std::size_t>(target - to);
    }

  private:
    using TConverter = std::unique_ptr<UConverter, TCloseConverter>;

    static TConverter Open(const char* encoding, const fs::path& name) {
        UErrorCode status = U_ZERO_ERROR;
        TConverter converter(ucnv_open(encoding, &status));
        if (U_FAILURE(status)) {
            throw EInvalidPublication(name, "o texto não pôde ser decodificado");
        }
        return converter;
    }

    IByteSource& source_;
    TConverter from_;
    TConverter to_;
    fs::path name_;
    std::array<char, 16384> bytes_{};
    const char* next_ = nullptr;
    const char* limit_ = nullptr;
    std::array<UChar, 4096> pivot_{};
    UChar* pivotSource_ = pivot_.data();
    UChar* pivotTarget_ = pivot_.data();
    bool ended_ = false;
    bool done_ = false;
};

} // namespace

std::unique_ptr<IByteSource> NewUtf8Source(IByteSource& source, const char* encoding, const fs::path& name) {
    return std::make_unique<TUtf8Source>(source, encoding, name);
}

} // namespace conferix
