#include "app/application_log.h"

#include "platform/platform.h"

#include <fmt/format.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <memory>

namespace conferix {

namespace {

constexpr const char* kFileName = "conferix.log";
constexpr std::size_t kFileBytes = std::size_t{1024} * 1024;
/// Full files that are kept beside the present one, as "conferix.1.log" and so on.
constexpr std::size_t kOldFiles = 3;

/// A text that stays in its line.
std::string OneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; }, '?');
    return text;
}

void Record(const char* category, const std::string& text) {
    try {
        const std::filesystem::path folder = DataFolder();
        CreateFolder(folder);
        const std::filesystem::path file = folder / kFileName;
        // Opening a pipe would wait for its reader.
        if (std::filesystem::exists(file) && !std::filesystem::is_regular_file(file))
            return;
        spdlog::logger log(category, std::make_shared<spdlog::sinks::rotating_file_sink_st>(
                                         file.native(), kFileBytes, kOldFiles));
        log.set_error_handler([](const std::string&) {});
        log.set_pattern("%Y-%m-%d %H:%M:%S [%n] %v");
        log.info(OneLine(text));
        log.flush();
    } catch (const std::exception&) {
        // The work that was to be recorded is done and must not fail for it.
    }
}

} // namespace

void LogCorrections(const std::string& fileName, const std::string& rule, const std::string& solver,
                    std::size_t count) {
    Record("solver", fmt::format("{} {} ao texto: regra {}, {}, arquivo {}", count,
                                 count == 1 ? "correção aplicada" : "correções aplicadas", rule, solver,
                                 PathText(PathFromText(fileName).filename())));
}

void LogRuleSwitched(const std::string& rule, bool enabled) {
    Record("configuracao", fmt::format("regra {} {}", rule, enabled ? "ativada" : "desativada"));
}

} // namespace conferix
