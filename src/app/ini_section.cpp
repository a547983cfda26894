#include "app/ini_section.h"

#include "data/database_tuss.h"
#include "platform/platform.h"

#define SI_NO_CONVERSION // texts stay in UTF-8
#include <SimpleIni.h>

#include <charconv>
#include <string_view>

namespace conferix {

namespace {

/// Whether a file stands where the program itself makes a folder when it is missing.
bool IsInDataFolder(const std::filesystem::path& file) {
    try {
        return file.parent_path() == DataFolder();
    } catch (const EDataFolderUnknown&) {
        return false;
    }
}

} // namespace

struct TIniSection::TIni {
    CSimpleIniA File{/*bUtf8=*/true};
};

std::filesystem::path TIniSection::DefaultFile() {
    const std::string named = GetEnvironment("CONFERIX_INI");
    if (!named.empty())
        return PathFromText(named);
    const std::filesystem::path beside = ExecutablePath().parent_path() / "Conferix.ini";
    // Where the terminology lies elsewhere the program is installed for all users, and its folder is not
    // theirs.
    const bool installed = TDatabaseTuss::DeliveredFileName().parent_path() != beside.parent_path();
    std::error_code ignored;
    return installed && !std::filesystem::exists(beside, ignored) ? DataFolder() / "Conferix.ini" : beside;
}

TIniSection::TIniSection(std::filesystem::path file, std::string section)
    : file_(std::move(file)), section_(std::move(section)), ini_(std::make_unique<TIni>()) {
    std::error_code ignored;
    if (!std::filesystem::exists(file_, ignored))
        return;
    if (ini_->File.LoadData(ReadWholeFile(file_)) < 0)
        throw EFileNotRead(file_, "o conteúdo não é o de um arquivo INI");
}

TIniSection::~TIniSection() = default;
TIniSection::TIniSection(TIniSection&& other) noexcept = default;

std::string TIniSection::ReadText(const std::string& key, const std::string& byDefault) const {
    return ini_->File.GetValue(section_.c_str(), key.c_str(), byDefault.c_str());
}

int TIniSection::ReadInteger(const std::string& key, int byDefault) const {
    const std::string text = ReadText(key, {});
    int value = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    return failure == std::errc() && end == text.data() + text.size() && !text.empty() ? value : byDefault;
}

void TIniSection::WriteText(const std::string& key, const std::string& value) {
    ini_->File.SetValue(section_.c_str(), key.c_str(), value.c_str());
}

void TIniSection::WriteInteger(const std::string& key, int value) {
    WriteText(key, std::to_string(value));
}

void TIniSection::SaveFile() const {
    std::string text;
    ini_->File.Save(text);
    if (IsInDataFolder(file_))
        CreateFolder(file_.parent_path());
    WriteFileAtomically(file_, text);
}

} // namespace conferix
