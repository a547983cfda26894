#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace conferix {

/// Base of settings that live in a section of "Conferix.ini". Sections, keys and comments that it does not
/// know stay as they are when the file is written.
class TIniSection {
  public:
    /// "Conferix.ini" beside the executable, or in the data folder where the program is installed for all
    /// users; CONFERIX_INI names another file.
    static std::filesystem::path DefaultFile();

    const std::filesystem::path& FileName() const { return file_; }

  protected:
    /// Reads the file; one that does not exist is empty. Raises EFileNotRead.
    TIniSection(std::filesystem::path file, std::string section);
    ~TIniSection();
    TIniSection(TIniSection&& other) noexcept;

    /// The default stands for a key that is absent or, of ReadInteger, no integer.
    std::string ReadText(const std::string& key, const std::string& byDefault) const;
    int ReadInteger(const std::string& key, int byDefault) const;
    void WriteText(const std::string& key, const std::string& value);
    void WriteInteger(const std::string& key, int value);
    /// Raises EFileNotWritten.
    void SaveFile() const;

  private:
    struct TIni;

    std::filesystem::path file_;
    std::string section_;
    std::unique_ptr<TIni> ini_;
};

} // namespace conferix
