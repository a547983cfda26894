#include "app/config.h"

#include "platform/whole_path.h"
#include "validator/rule_list.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <unordered_set>

namespace conferix {

namespace {

constexpr const char* kEnabledValidations = "EnabledValidations";
constexpr int kIndentation = 2;
constexpr int kMaxDepth = 100; ///< of nested lists and objects; writing them goes down by calls

nlohmann::ordered_json ParseConfig(const std::string& text, const std::filesystem::path& file) {
    bool tooDeep = false;
    nlohmann::ordered_json content = nlohmann::ordered_json::parse(
        text, [&](int depth, nlohmann::ordered_json::parse_event_t, nlohmann::ordered_json&) {
            tooDeep = tooDeep || depth > kMaxDepth;
            return depth <= kMaxDepth;
        });
    if (tooDeep)
        throw EInvalidConfig(file, fmt::format("tem mais de {} níveis", kMaxDepth));
    return content;
}

} // namespace

EInvalidConfig::EInvalidConfig(const std::filesystem::path& file, const std::string& reason,
                               const std::string& advice)
    : std::runtime_error(fmt::format("O arquivo de configuração \"{}\" não pôde ser lido: {}. {}",
                                     PathText(file), reason, advice)) {}

std::filesystem::path TConfig::DefaultFile() {
    return DataFolder() / "config.json";
}

TConfig TConfig::Load(const std::filesystem::path& file) {
    TConfig config;
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored)) {
        config.SetDefaultInitialConfig();
        return config;
    }
    try {
        config.source_ = ReadWholeFile(file);
        config.enabled_ =
            ParseConfig(config.source_, file).at(kEnabledValidations).get<std::vector<std::string>>();
    } catch (const nlohmann::json::parse_error& error) {
        throw EInvalidConfig(file, fmt::format("não é um JSON válido (posição {})", error.byte));
    } catch (const nlohmann::json::exception& error) {
        constexpr int kNumberTooLarge = 406;
        if (error.id == kNumberTooLarge)
            throw EInvalidConfig(file, "tem um número grande demais");
        throw EInvalidConfig(file, "falta a lista de textos \"EnabledValidations\"");
    } catch (const EFileNotRead& error) {
        throw EInvalidConfig(file, error.Reason());
    }
    std::sort(config.enabled_.begin(), config.enabled_.end());
    config.enabled_.erase(std::unique(config.enabled_.begin(), config.enabled_.end()), config.enabled_.end());
    return config;
}

std::vector<std::string> TConfig::GetEnabledValidations(const std::filesystem::path& file) {
    return Load(file).enabled_;
}

std::unique_ptr<TFileLock> TConfig::Lock(const std::filesystem::path& file) {
    std::filesystem::path lock = CanonicalPath(file);
    CreateFolder(lock.parent_path());
    return std::make_unique<TFileLock>(lock += ".trava", true);
}

void TConfig::Save(const std::filesystem::path& file) const {
    nlohmann::ordered_json content = nlohmann::ordered_json::parse(source_);
    content[kEnabledValidations] = enabled_;
    if (file.has_parent_path())
        CreateFolder(file.parent_path());
    WriteFileAtomically(file, content.dump(kIndentation) + "\n");
}

void TConfig::SetDefaultInitialConfig() {
    enabled_.clear();
    for (const TListedRule& rule : ListRules())
        Enable(rule.Rule->Name);
}

std::vector<std::string> TConfig::UnknownValidations() const {
    std::unordered_set<std::string> known;
    for (const TListedRule& rule : ListRules())
        known.insert(rule.Rule->Name);
    std::vector<std::string> unknown;
    for (const std::string& name : enabled_)
        if (!known.contains(name))
            unknown.push_back(name);
    return unknown;
}

bool TConfig::IsEnabled(const std::string& name) const {
    return std::binary_search(enabled_.begin(), enabled_.end(), name);
}

void TConfig::Enable(const std::string& name) {
    const auto place = std::lower_bound(enabled_.begin(), enabled_.end(), name);
    if (place == enabled_.end() || *place != name)
        enabled_.insert(place, name);
}

void TConfig::Disable(const std::string& name) {
    std::erase(enabled_, name);
}

} // namespace conferix
