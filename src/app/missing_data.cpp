#include "app/missing_data.h"

#include "app/installation.h"
#include "platform/platform.h"

#include <fmt/format.h>

#include <array>
#include <string_view>
#include <utility>

namespace conferix {

TMissingData MissingDataOf(const TXmlMessage& message) {
    const std::string& reason = message.Reason();
    const auto says = [&reason](const char* words) { return reason.find(words) != std::string::npos; };
    if (message.MsgType() == TMessageType::mtWarning && message.Kind() == TFindingKind::Run &&
        says(" não está instalada; os códigos "))
        return TMissingData::Terminology;
    return says("conferix esquemas importar") || reason.starts_with("Schema file ") ? TMissingData::Schema
                                                                                    : TMissingData::Nothing;
}

std::string MissingSchemaText(const std::filesystem::path& schema) {
    const std::filesystem::path folder = schema.parent_path();
    return fmt::format(
        "O schema \"{}\" não está na pasta \"{}\". Para instalar os schemas publicados pela ANS: "
        "conferix esquemas importar ARQUIVO{}",
        PathText(schema.filename()), PathText(folder),
        folder == InstalledSchemas().Folder() ? std::string()
                                              : fmt::format(" --esquemas \"{}\"", PathText(folder)));
}

std::string TextForWindow(std::string text) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 6> kCommands = {
        {{": conferix terminologia importar ARQUIVO", " em Configurações > Terminologia"},
         {"conferix terminologia importar ARQUIVO", "Configurações > Terminologia"},
         {": conferix esquemas importar ARQUIVO", " em Configurações > Schemas"},
         {": conferix converter", " em Validação > Converter versão"},
         {"conferix converter", "Validação > Converter versão"},
         {"\"conferix proxy\"", "Configurações > Configurações de Proxy"}}};
    for (const auto& [command, menu] : kCommands)
        for (std::size_t at = 0; (at = text.find(command, at)) != std::string::npos; at += menu.size())
            text.replace(at, command.size(), menu);
    return text;
}

} // namespace conferix
