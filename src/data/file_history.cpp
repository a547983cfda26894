#include "data/file_history.h"

#include <SQLiteCpp/Column.h>
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>

#include <utility>

namespace conferix {

TFileHistory::TFileHistory(TDatabase database, std::function<void(const std::string&)> onFailure)
    : database_(std::move(database),
                "Os arquivos recentes e o histórico de validações não serão guardados; o resto do programa "
                "não depende deles.",
                std::move(onFailure)) {}

void TFileHistory::NoteOpened(const std::string& file) {
    database_.Use(true, [&](SQLite::Database& database) {
        SQLite::Transaction transaction(database);
        // A number of its own says which is newer, since several are opened within a second.
        SQLite::Statement note(database, "INSERT OR REPLACE INTO TB_ARQUIVO_RECENTE (ORDEM, CAMINHO) VALUES "
                                         "((SELECT COALESCE(MAX(ORDEM), 0) + 1 FROM TB_ARQUIVO_RECENTE), ?)");
        note.bind(1, file);
        note.exec();
        SQLite::Statement trim(database, "DELETE FROM TB_ARQUIVO_RECENTE WHERE ORDEM NOT IN (SELECT ORDEM "
                                         "FROM TB_ARQUIVO_RECENTE ORDER BY ORDEM DESC LIMIT ?)");
        trim.bind(1, kRecentFiles);
        trim.exec();
        transaction.commit();
    });
}

void TFileHistory::Forget(const std::string& file) {
    database_.Use(false, [&](SQLite::Database& database) {
        SQLite::Statement remove(database, "DELETE FROM TB_ARQUIVO_RECENTE WHERE CAMINHO = ?");
        remove.bind(1, file);
        remove.exec();
    });
}

std::vector<std::string> TFileHistory::RecentFiles() {
    std::vector<std::string> files;
    database_.Use(false, [&](SQLite::Database& database) {
        SQLite::Statement select(database, "SELECT CAMINHO FROM TB_ARQUIVO_RECENTE ORDER BY ORDEM DESC");
        while (select.executeStep())
            files.push_back(select.getColumn(0).getString());
    });
    return files;
}

void TFileHistory::NoteValidated(const TValidationRecord& record) {
    database_.Use(true, [&](SQLite::Database& database) {
        SQLite::Transaction transaction(database);
        SQLite::Statement same(database, "DELETE FROM TB_VALIDACAO WHERE ID = (SELECT MAX(ID) FROM "
                                         "TB_VALIDACAO WHERE CAMINHO = ?1) AND VERSAO = ?2 AND VALIDO IS ?3 "
                                         "AND ERROS = ?4 AND AVISOS = ?5");
        SQLite::Statement note(database, "INSERT INTO TB_VALIDACAO (CAMINHO, VERSAO, VALIDO, ERROS, AVISOS, "
                                         "DATA) VALUES (?1, ?2, ?3, ?4, ?5, datetime('now'))");
        for (SQLite::Statement* statement : {&same, &note}) {
            statement->bind(1, record.File);
            statement->bind(2, record.Versao);
            if (record.Valid)
                statement->bind(3, *record.Valid ? 1 : 0);
            else
                statement->bind(3);
            statement->bind(4, record.Errors);
            statement->bind(5, record.Warnings);
            statement->exec();
        }
        SQLite::Statement trim(database, "DELETE FROM TB_VALIDACAO WHERE ID <= "
                                         "(SELECT MAX(ID) FROM TB_VALIDACAO) - ?");
        trim.bind(1, kValidations);
        trim.exec();
        transaction.commit();
    });
}

std::vector<TValidationRecord> TFileHistory::Validations() {
    std::vector<TValidationRecord> records;
    database_.Use(false, [&](SQLite::Database& database) {
        SQLite::Statement select(database, "SELECT CAMINHO, datetime(DATA, 'localtime'), VERSAO, VALIDO, "
                                           "ERROS, AVISOS FROM TB_VALIDACAO ORDER BY ID DESC");
        while (select.executeStep()) {
            std::optional<bool> verdict;
            if (!select.getColumn(3).isNull())
                verdict = select.getColumn(3).getInt() != 0;
            records.push_back({select.getColumn(0).getString(), select.getColumn(1).getString(),
                               select.getColumn(2).getString(), verdict, select.getColumn(4).getInt64(),
                               select.getColumn(5).getInt64()});
        }
    });
    return records;
}

void TFileHistory::Clear() {
    database_.Use(false, [](SQLite::Database& database) {
        database.exec("DELETE FROM TB_ARQUIVO_RECENTE; DELETE FROM TB_VALIDACAO");
    });
}

} // namespace conferix
