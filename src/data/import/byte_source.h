// Bytes that are read once, from their beginning to their end.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace conferix {

/// A stream of bytes in constant memory.
class IByteSource {
  public:
    IByteSource() = default;
    IByteSource(const IByteSource&) = delete;
    IByteSource& operator=(const IByteSource&) = delete;
    virtual ~IByteSource() = default;

    /// Fills up to `count` bytes; fewer only at the end, 0 after it. Raises EInvalidPublication.
    virtual std::size_t Read(char* to, std::size_t count) = 0;
};

/// The bytes of a file. Raises EInvalidPublication.
class TFileSource : public IByteSource {
  public:
    explicit TFileSource(const std::filesystem::path& file);
    std::size_t Read(char* to, std::size_t count) override;

  private:
    std::filesystem::path file_;
    std::ifstream stream_;
};

/// A source whose first bytes can be looked at before it is read.
class TPeekSource : public IByteSource {
  public:
    /// Looks at up to `count` bytes.
    TPeekSource(IByteSource& source, std::size_t count);

    const std::string& Head() const { return head_; }
    /// Leaves out the first bytes of the head.
    void Skip(std::size_t count) { given_ += count; }
    std::size_t Read(char* to, std::size_t count) override;

  private:
    IByteSource& source_;
    std::string head_;
    std::size_t given_ = 0;
};

/// Text in UTF-16 (`encoding` as ICU names it) as UTF-8. Raises EInvalidPublication.
std::unique_ptr<IByteSource> NewUtf8Source(IByteSource& source, const char* encoding,
                                           const std::filesystem::path& name);

} // namespace conferix
