// Commands as a user runs them.
#pragma once

#include "app/cli/cli.h"
#include "support/test_files.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace conferix {

struct TCommandResult {
    int Status;
    std::string Out;
    std::string Err;

    nlohmann::json Json() const { return nlohmann::json::parse(Out); }
};

/// Tests with a folder of their own, which holds the data folder and Conferix.ini as well.
class TCommandTest : public testing::Test {
  protected:
    std::string File(const std::string& name) const { return (folder_ / name).string(); }

    /// Runs a command with `options_` behind its words.
    TCommandResult Run(std::vector<std::string> words, const std::string& input = {}) const {
        words.insert(words.end(), options_.begin(), options_.end());
        std::istringstream in(input);
        std::ostringstream out;
        std::ostringstream err;
        const int status = RunCli(words, {in, out, err});
        return {status, out.str(), err.str()};
    }
    nlohmann::json RunJson(std::vector<std::string> words, const std::string& input = {}) const {
        words.insert(words.end(), {"--formato", "json"});
        return Run(std::move(words), input).Json();
    }
    /// The report of one file.
    nlohmann::json Validate(const std::string& file) const { return RunJson({"validar", file})[0]; }
    nlohmann::json ValidateBytes(const std::string& bytes) const {
        return RunJson({"validar", "-"}, bytes)[0];
    }

    TTemporaryFolder folder_;
    std::vector<std::string> options_;
    TEnvironment data_{"CONFERIX_DADOS", File("dados")};
    TEnvironment ini_{"CONFERIX_INI", File("Conferix.ini")};
    TEnvironment terminology_{"CONFERIX_TUSS", {}};
};

inline bool IsErrorOf(const nlohmann::json& message) {
    return message["tipo"] == "mtError" || message["tipo"] == "mtFatal";
}

/// Rule and line of the errors of a report.
inline std::multiset<std::string> ErrorsOf(const nlohmann::json& report) {
    std::multiset<std::string> errors;
    for (const nlohmann::json& message : report["mensagens"])
        if (IsErrorOf(message))
            errors.insert(
                fmt::format("{} {}", message["validacao"].get<std::string>(), message["linha"].get<int>()));
    return errors;
}

} // namespace conferix
