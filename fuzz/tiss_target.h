// The engine over one input, with the built-in schemas and a few terms of each table.
#pragma once

#include "app/config.h"
#include "app/validador_controller.h"
#include "data/tuss_connection.h"
#include "data/tuss_writer.h"
#include "platform/iso_date.h"
#include "target.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace conferix {

inline const std::shared_ptr<TTussConnection>& FewTerms() {
    static const auto terms = TTussConnection::InMemory([](TTussWriter& writer) {
        for (const char* table : {"18", "19", "20", "22", "63", "87"})
            for (const char* code : {"10101012", "60000783", "81000065", "063", "22"})
                writer.Insert(table, TTussTerm{code, ParseIsoDate("2020-01-01"), {}});
    });
    return terms;
}

inline const std::vector<std::string>& AllRulesEnabled() {
    static const std::vector<std::string> enabled = [] {
        TConfig config;
        config.SetDefaultInitialConfig();
        return config.EnabledValidations();
    }();
    return enabled;
}

/// A file in memory and the result of its last validation.
class TTissRun {
  public:
    TTissRun() : controller_(TDBConnectionFactory([] { return FewTerms(); })) {
        controller_.SetSchemaTissPath(CONFERIX_ESQUEMAS);
        controller_.Events().OnFileOpen.Subscribe([&](TFileOpenArgs& args) { text_ = args.SharedContent; });
    }

    /// False for bytes that are no text.
    bool Open(std::string_view bytes) {
        try {
            controller_.Load("fuzz", TTissFile(std::string(bytes)));
            return true;
        } catch (const EXmlEncoding&) {
            return false;
        }
    }
    void Validate() {
        controller_.Validate(text_, AllRulesEnabled());
        Demand(!Result().AllMessages.empty(), "a run ends in at least one message");
        for (const auto& message : Result().AllMessages)
            Demand(message->Reason().find("erro não identificado") == std::string::npos,
                   "no rule fails for a reason of its own");
    }

    TValidadorController& Controller() { return controller_; }
    const std::shared_ptr<const std::string>& Text() const { return text_; }
    const TValidateArgs& Result() { return controller_.Events().OnValidate.Current(); }

  private:
    TValidadorController controller_;
    std::shared_ptr<const std::string> text_;
};

} // namespace conferix
