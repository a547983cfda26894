// What the service does with files: the same as the commands, in the same words.
#pragma once

#include "app/config.h"
#include "app/file_validation.h"
#include "service/http_message.h"
#include "service/service_metrics.h"

#include <cstddef>
#include <functional>

namespace conferix {

/// What the requests work with, as the commands do.
struct TServiceEngine {
    TSchemaFolder Schemas;
    /// A source of connections for one thread.
    std::function<TDBConnectionFactory()> NewTerminology;
    /// The rules that are switched on, read afresh.
    std::function<TConfig()> LoadConfig;
    std::size_t AnswerBytes = std::size_t{256} << 20; ///< an answer does not grow beyond
};

/// POST /validar. `terminology`: connections of the thread.
TServiceAnswer AnswerValidar(THttpRequest& request, const TServiceEngine& engine,
                             const TDBConnectionFactory& terminology, TServiceMetrics& metrics);
/// POST /corrigir.
TServiceAnswer AnswerCorrigir(THttpRequest& request, const TServiceEngine& engine,
                              const TDBConnectionFactory& terminology, TServiceMetrics& metrics);
/// POST /imprimir: the guides of lots on their forms, as a PDF file.
TServiceAnswer AnswerImprimir(THttpRequest& request, const TServiceEngine& engine,
                              const TDBConnectionFactory& terminology, TServiceMetrics& metrics);
/// GET /regras.
TServiceAnswer AnswerRegras(const THttpRequest& request, const TServiceEngine& engine);

} // namespace conferix
