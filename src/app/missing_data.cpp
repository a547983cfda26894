#include "app/missing_data.h"

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

} // namespace conferix
