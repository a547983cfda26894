// What is written waits outside of memory.
#pragma once

#include <cstdio>
#include <memory>
#include <streambuf>
#include <string>

namespace conferix {

/// What a stream writes to whose bytes wait in a temporary file until they are taken: memory does not grow
/// with them. Where the folder of temporary files takes none, or no more, they wait in memory.
class TSpoolBuffer : public std::streambuf {
  public:
    TSpoolBuffer();

    /// All that was written; to be called once. Raises EFileNotRead where the file does not give it back.
    std::string Take();

  protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;

  private:
    struct TClose {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    void MoveToFile();
    /// Takes what is in the file before what of the memory is not in it.
    void BackToMemory(std::size_t done);

    std::unique_ptr<std::FILE, TClose> file_; ///< null: in memory
    std::string memory_;                      ///< what is not in the file
    std::size_t size_ = 0;                    ///< of the file
};

} // namespace conferix
