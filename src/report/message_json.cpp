#include "report/message_json.h"

#include "report/console.h"
#include "validation/solver.h"
#include "validation/validation_message.h"

#include <vector>

namespace conferix {

TJson MessageJson(const TXmlMessage& message, std::size_t number, bool shown) {
    TJson corrections = TJson::array();
    for (const auto& solver : message.Solvers())
        corrections.push_back({{"nome", solver->Name()}, {"descricao", solver->Description()}});
    return {{"id", number},
            {"tipo", NameOf(message.MsgType())},
            {"validacao", RuleName(message)},
            {"linha", message.Line()},
            {"coluna", message.LinePos()},
            {"posicao", message.FilePos()},
            {"guia", message.NumeroGuia()},
            {"campo", message.Campo()},
            {"motivo", message.Reason()},
            {"texto", message.Msg()},
            {"origem", message.SrcText()},
            {"exibida", shown},
            {"correcoes", std::move(corrections)}};
}

TJson CountsJson(const TMessageCounts& counts) {
    TJson json;
    for (const TMessageType type :
         {TMessageType::mtFatal, TMessageType::mtError, TMessageType::mtWarning, TMessageType::mtInformation})
        json[NameOf(type)] = counts.Of(type);
    return json;
}

TJson VerdictJson(const TValidateArgs& result) {
    return result.Verified ? TJson(result.FileStateFlags.Contains(TFileStateFlag::sfValido)) : TJson(nullptr);
}

TJson CorrectionJson(const TCorrectionRecord& record) {
    const TXmlMessage& message = *record.Message;
    TJson json = {{"validacao", RuleName(message)}, {"linha", message.Line()},
                  {"guia", message.NumeroGuia()},   {"campo", message.Campo()},
                  {"nome", record.Solver},          {"descricao", record.Description},
                  {"elemento", record.Element},     {"antes", record.Before}};
    if (record.Reason.empty())
        json["depois"] = record.After;
    else
        json["motivo"] = record.WhyLeft();
    return json;
}

TJson ErrorJson(int status, std::span<const std::string> messages) {
    return {{"status", status}, {"mensagens", std::vector<std::string>(messages.begin(), messages.end())}};
}

TJson CorrectionReportJson(const std::string& fileName, const TCorrectionResult& result,
                           const TValidateArgs& corrected) {
    const auto list = [](const std::vector<TCorrectionRecord>& records) {
        TJson json = TJson::array();
        for (const TCorrectionRecord& record : records)
            json.push_back(CorrectionJson(record));
        return json;
    };
    return {{"arquivo", fileName},
            {"correcoes", list(result.Applied)},
            {"naoCorrigidas", list(result.LeftOut)},
            {"valido", VerdictJson(corrected)}};
}

std::string JsonText(const TJson& json, int indent) {
    return json.dump(indent, ' ', false, TJson::error_handler_t::replace);
}

TJsonList::TJsonList(std::string object, int indent) : text_(std::move(object)), indent_(indent) {
    // "[]" and the brace that closes the object, in its own line where there are lines.
    end_ = text_.substr(text_.rfind("[]") + 1);
    text_.resize(text_.size() - end_.size());
}

void TJsonList::Add(const TJson& value) {
    if (!empty_)
        text_ += ',';
    empty_ = false;
    const std::string piece = JsonText(value, indent_);
    if (indent_ < 0) {
        text_ += piece;
        return;
    }
    // Line breaks inside of texts are escaped, so that these are all.
    const std::string margin(static_cast<std::size_t>(2 * indent_), ' ');
    text_ += '\n' + margin;
    for (const char c : piece) {
        text_ += c;
        if (c == '\n')
            text_ += margin;
    }
}

std::string TJsonList::Take() {
    if (!empty_ && indent_ >= 0)
        text_ += '\n' + std::string(static_cast<std::size_t>(indent_), ' ');
    text_ += end_;
    return std::move(text_);
}

} // namespace conferix
