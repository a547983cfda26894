#include "data/sqlite_reason.h"

#include <SQLiteCpp/Exception.h>
#include <sqlite3.h>

namespace conferix {

std::string SqliteReason(const SQLite::Exception& error) {
    switch (error.getErrorCode()) {
    case SQLITE_NOTADB:
        return "o arquivo não é um banco de dados SQLite";
    case SQLITE_CORRUPT:
        return "o banco de dados está danificado";
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return "o banco de dados está em uso por outro programa";
    case SQLITE_CANTOPEN:
        return "o arquivo não pôde ser aberto";
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return "acesso negado";
    case SQLITE_READONLY:
        return error.getExtendedErrorCode() == SQLITE_READONLY_ROLLBACK
                   ? "a última gravação foi interrompida e precisa ser refeita"
                   : "o banco de dados é somente de leitura";
    case SQLITE_FULL:
        return "não há espaço livre no disco";
    case SQLITE_IOERR:
        return "erro de leitura ou de gravação no disco";
    case SQLITE_NOMEM:
        return "memória insuficiente";
    case SQLITE_CONSTRAINT:
        return "já existe uma linha com essa chave";
    default:
        return error.what();
    }
}

} // namespace conferix
