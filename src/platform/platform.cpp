#include "platform/platform.h"

#include "platform/system_calls.h"

#include <utility>

namespace conferix {

namespace fs = std::filesystem;

EFile::EFile(const std::string& action, const fs::path& file, const std::string& reason)
    : std::runtime_error(action + " \"" + PathText(file) + "\": " + reason), fileName_(file),
      reason_(reason) {}

EFileNotRead::EFileNotRead(const fs::path& file, const std::string& reason)
    : EFile("Não foi possível ler o arquivo", file, reason) {}

EFileNotWritten::EFileNotWritten(const fs::path& file, const std::string& reason)
    : EFile("Não foi possível gravar o arquivo", file, reason) {}

EFileChanged::EFileChanged(const fs::path& file, const std::string& reason) : EFileNotWritten(file, reason) {}

EFolderNotCreated::EFolderNotCreated(const fs::path& folder, const std::string& reason)
    : EFile("Não foi possível criar a pasta", folder, reason) {}

EDataFolderUnknown::EDataFolderUnknown()
    : std::runtime_error("Não foi possível determinar a pasta de dados do usuário. "
                         "Informe-a na variável de ambiente CONFERIX_DADOS.") {}

std::string ReasonText(const std::error_code& error) {
    static const std::pair<std::errc, const char*> kTexts[] = {
        {std::errc::no_such_file_or_directory, "o arquivo não existe"},
        {std::errc::permission_denied, "acesso negado"},
        {std::errc::operation_not_permitted, "acesso negado"},
        {std::errc::is_a_directory, "é uma pasta, não um arquivo"},
        {std::errc::not_a_directory, "uma parte do caminho não é uma pasta"},
        {std::errc::file_exists, "já existe um arquivo com esse nome"},
        {std::errc::no_space_on_device, "não há espaço livre no disco"},
        {std::errc::file_too_large, "o arquivo passaria do tamanho permitido"},
        {std::errc::read_only_file_system, "o disco é somente de leitura"},
        {std::errc::filename_too_long, "o nome é longo demais"},
        {std::errc::too_many_symbolic_link_levels, "há ligações simbólicas em círculo"},
        {std::errc::too_many_files_open, "há arquivos abertos demais"},
        {std::errc::io_error, "erro de leitura ou de gravação no disco"},
        {std::errc::broken_pipe, "quem lia os dados encerrou a leitura"},
        {std::errc::not_enough_memory, "memória insuficiente"},
    };
    if (std::optional<std::string> reason = SystemReason(error)) {
        return *std::move(reason);
    }
    for (const auto& [code, text] : kTexts) {
        if (error == code) {
            return text;
        }
    }
    return SystemMessage(error);
}

std::string PathText(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

fs::path DataFolder() {
    const std::string named = GetEnvironment("CONFERIX_DADOS");
    if (!named.empty()) {
        return PathFromText(named);
    }
    const fs::path base = UserDataFolder();
    if (base.empty()) {
        throw EDataFolderUnknown();
    }
    return base / "Brenvo" / "Conferix";
}

void CreateFolder(const fs::path& folder) {
    std::error_code error;
    if (fs::is_directory(folder, error)) {
        return;
    }
    fs::create_directories(folder, error);
    if (error) {
        throw EFolderNotCreated(folder, ReasonText(error));
    }
}

} // namespace conferix
