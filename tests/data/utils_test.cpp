#include "data/constantes.h"
#include "data/database_tuss.h"
#include "data/db_connection_factory.h"
#include "data/db_utils.h"
#include "data/tuss.h"
#include "support/test_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace conferix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAreArray;

TEST(DBUtils, MakesRepeatedNamesUnique) {
    const struct {
        std::vector<std::string> Names;
        std::vector<std::string> Unique;
    } cases[] = {
        {{}, {}},
        {{"TABELA", "CODIGO"}, {"TABELA", "CODIGO"}},
        {{"CODIGO", "CODIGO", "CODIGO"}, {"CODIGO", "CODIGO_1", "CODIGO_2"}},
        {{"A", "B", "A", "B"}, {"A", "B", "A_1", "B_1"}},
        {{"A", "A", "A_1"}, {"A", "A_2", "A_1"}},
        {{"A_1", "A", "A", "A_1"}, {"A_1", "A", "A_2", "A_1_1"}},
    };
    for (const auto& c : cases) {
        std::vector<TDBParam> params;
        params.reserve(c.Names.size());
        for (const std::string& name : c.Names)
            params.push_back({name, {}});
        TDBUtils::MakeNamesUnique(params);
        std::vector<std::string> names;
        names.reserve(params.size());
        for (const TDBParam& param : params)
            names.push_back(param.Name);
        EXPECT_THAT(names, ElementsAreArray(c.Unique));
    }
}

TEST(DBUtils, ShowsAMissingValueAsNull) {
    EXPECT_EQ(TDBUtils::Describe({{"TABELA", "22"}, {"CODIGO", {}}, {"GRUPO", ""}}),
              "TABELA = 22, CODIGO = NULL, GRUPO = ");
    EXPECT_EQ(TDBUtils::Describe({}), "");
}

TEST(TussTableName, KnowsTheTablesOfTermsAndRaisesForOthers) {
    for (const std::string number : {"18", "19", "20", "22", "63", "87"})
        EXPECT_EQ(TussTableName(number), "TB_TUSS_" + number);
    for (const std::string number : {"", "00", "64", "98", "022", "22 "})
        EXPECT_EQ(TextOf<ETussTableWithoutEntity>([&] { TussTableName(number); }),
                  "Tabela " + number + " do TISS não possui entidade correspondente.");
}

TEST(Constantes, CreatesTheFoldersThatAreMissing) {
    const TTemporaryFolder folder;
    const TEnvironment dados("CONFERIX_DADOS", (folder / "meus/dados").string());
    EXPECT_EQ(TConstantes::SchemaTissDirectory(), folder / "meus/dados/schemas/tiss");
    EXPECT_TRUE(fs::is_directory(folder / "meus/dados/schemas/tiss"));
    EXPECT_EQ(TConstantes::ValidadorDirectory(), folder / "meus/dados");
    const TEnvironment occupied("CONFERIX_DADOS", CONFERIX_GERA_TUSS);
    EXPECT_THROW(TConstantes::ValidadorDirectory(), EFolderNotCreated);
}

TEST(DatabaseTuss, IsTheFileGivenOrNamedOrImportedOrBesideTheProgram) {
    const TTemporaryFolder folder;
    const TEnvironment data("CONFERIX_DADOS", folder.Path().string());
    const TEnvironment none("CONFERIX_TUSS", {});
    EXPECT_EQ(TDatabaseTuss().DatabaseFileName(), ExecutablePath().parent_path() / "tuss.db");
    WriteTestFile(folder / "tuss.db", "importada");
    EXPECT_EQ(TDatabaseTuss().DatabaseFileName(), folder / "tuss.db");
    EXPECT_EQ(TDatabaseTuss::ImportTarget(), folder / "tuss.db");
    const TEnvironment named("CONFERIX_TUSS", "/outra/base.db");
    EXPECT_EQ(TDatabaseTuss().DatabaseFileName(), "/outra/base.db");
    EXPECT_EQ(TDatabaseTuss::ImportTarget(), "/outra/base.db");
    EXPECT_EQ(TDatabaseTuss("minha.db").DatabaseFileName(), "minha.db");
    EXPECT_EQ(TDatabaseTuss::ImportTarget("minha.db"), "minha.db");
}

TEST(DBConnectionFactory, HandsOutConnectionsOfItsSource) {
    const TDatabaseTuss present(CONFERIX_TUSS_DB);
    const TDBConnectionFactory factory([&] { return present.CreateConnection(); });
    const auto first = factory.CreateConnection();
    EXPECT_NE(first, factory.CreateConnection());
    EXPECT_TRUE(first->AreCitiesInstalled());

    const TDatabaseTuss missing("falta.db");
    const TDBConnectionFactory failing([&] { return missing.CreateConnection(); });
    EXPECT_THROW(failing.CreateConnection(), ETerminologyNotOpened);
}

} // namespace
} // namespace conferix
