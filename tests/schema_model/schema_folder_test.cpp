// Which schema serves a version: an imported one first, else the one that comes with the program.
#include "app/schema_folder.h"
#include "schema_model/seal.h"
#include "support/support.h"

#include <gmock/gmock.h>

namespace conferix {
namespace {

constexpr std::string_view kMain = "<schema><import schemaLocation=\"outro.xsd\"/></schema>\n";
constexpr std::string_view kOther = "<schema/>\n";

class PastaDeSchemas : public testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::create_directory(BuiltIn());
        WriteTestFile(BuiltIn() / "tiss.xsd", WithSeal(std::string(kMain)));
        WriteTestFile(BuiltIn() / "outro.xsd", WithSeal(std::string(kOther)));
    }
    std::filesystem::path BuiltIn() const { return root_.Path() / "embutidos"; }
    std::filesystem::path User() const { return root_.Path() / "dados" / "tiss"; }
    TSchemaFolder Folder() const { return TSchemaFolder(User(), BuiltIn()); }

  private:
    TTemporaryFolder root_;
};

TEST_F(PastaDeSchemas, ReadsABuiltInFileWhereItIsUnlessItImportsOneOfTheUser) {
    EXPECT_EQ(Folder().Origin("tiss.xsd"), TSchemaOrigin::BuiltIn);
    EXPECT_EQ(Folder().Find("tiss.xsd"), BuiltIn() / "tiss.xsd");
    EXPECT_EQ(Folder().Locate("tiss.xsd"), BuiltIn() / "tiss.xsd");
    EXPECT_EQ(TSchemaFolder({}, BuiltIn()).Locate("tiss.xsd"), BuiltIn() / "tiss.xsd");
    EXPECT_FALSE(std::filesystem::exists(User())) << "nothing is copied";
    std::filesystem::create_directories(User());
    WriteTestFile(User() / "tiss.xsd", WithSeal("<schema>antigo</schema>\n"));
    EXPECT_EQ(Folder().Origin("tiss.xsd"), TSchemaOrigin::BuiltIn);
    EXPECT_EQ(Folder().Locate("tiss.xsd"), BuiltIn() / "tiss.xsd") << "a copy of an older program gives way";
    WriteTestFile(User() / "outro.xsd", "<schema/>");
    EXPECT_EQ(Folder().Locate("tiss.xsd"), User() / "tiss.xsd");
    EXPECT_EQ(ReadTestFile(User() / "tiss.xsd"), WithSeal(std::string(kMain)));
}

TEST_F(PastaDeSchemas, AFileOfTheUserIsNeverReplaced) {
    std::string changed = WithSeal(std::string(kMain));
    changed.replace(changed.find("outro"), 5, "meu");
    for (const std::string& mine : {std::string("<schema/>"), std::string(), changed, changed + "\n"}) {
        std::filesystem::create_directories(User());
        WriteTestFile(User() / "tiss.xsd", mine);
        WriteTestFile(User() / "outro.xsd", mine);
        EXPECT_EQ(Folder().Origin("tiss.xsd"), TSchemaOrigin::Imported) << mine;
        EXPECT_EQ(Folder().Locate("tiss.xsd"), User() / "tiss.xsd") << mine;
        EXPECT_EQ(ReadTestFile(User() / "tiss.xsd"), mine);
        EXPECT_EQ(ReadTestFile(User() / "outro.xsd"), mine);
        std::filesystem::remove(User() / "tiss.xsd");
        Folder().Locate("tiss.xsd");
        EXPECT_EQ(ReadTestFile(User() / "outro.xsd"), mine) << "nor is one that a built-in file imports";
    }
}

TEST_F(PastaDeSchemas, ReadsTheBuiltInFileWhereTheFolderCannotBeWritten) {
    WriteTestFile(User().parent_path(), "a file where a folder should be");
    EXPECT_EQ(Folder().Locate("tiss.xsd"), BuiltIn() / "tiss.xsd");
}

TEST_F(PastaDeSchemas, AFolderThatTheUserNamesStandsForItself) {
    const TSchemaFolder own(User());
    EXPECT_EQ(own.Locate("tiss.xsd"), User() / "tiss.xsd");
    EXPECT_FALSE(std::filesystem::exists(User()));
    EXPECT_EQ(own.Origin("tiss.xsd"), TSchemaOrigin::Missing);
    EXPECT_EQ(Folder().Locate("nenhum.xsd"), User() / "nenhum.xsd");
    EXPECT_EQ(Folder().Origin("nenhum.xsd"), TSchemaOrigin::Missing);
}

} // namespace
} // namespace conferix
