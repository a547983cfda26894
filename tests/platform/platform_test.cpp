#include "platform/platform.h"
#include "support/system.h"
#include "support/test_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>

namespace conferix {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

// ---- reading

TEST(ReadWholeFile, GivesAllBytesOfAFile) {
    const TTemporaryFolder folder;
    for (const std::string& content :
         {std::string(), std::string("a\0\xFF\r\n\x1A", 6), std::string(1'000'003, 'x')}) {
        WriteTestFile(folder / "guia ç.xml", content);
        EXPECT_EQ(ReadWholeFile(folder / "guia ç.xml"), content);
    }
}

TEST(ReadWholeFile, NamesFileAndReasonOfAFailure) {
    const TTemporaryFolder folder;
    WriteTestFile(folder / "lote.xml", "x");
    fs::create_directory(folder / "pasta");
    const struct {
        const char* Name;
        const char* Reason;
    } cases[] = {
        {"falta.xml", "o arquivo não existe"},
        {"lote.xml/x", "uma parte do caminho não é uma pasta"},
        {"pasta", "é uma pasta, não um arquivo"},
    };
    for (const auto& c : cases) {
        const fs::path file = folder / c.Name;
        EXPECT_EQ(TextOf<EFileNotRead>([&] { ReadWholeFile(file); }),
                  "Não foi possível ler o arquivo \"" + file.string() + "\": " + c.Reason);
    }
    EXPECT_THAT(TextOf<EFileNotRead>([&] { ReadWholeFile(folder / std::string(300, 'n')); }),
                HasSubstr("o nome é longo demais"));
}

TEST(ReadWholeFile, RefusesMoreThanTheLimit) {
    const TTemporaryFolder folder;
    const fs::path file = folder / "grande.xml";
    WriteTestFile(file, "");
    fs::resize_file(file, 2'000'000'001);
    const TEnvironment locale("LC_ALL", "C");
    EXPECT_THAT(TextOf<EFileNotRead>([&] { ReadWholeFile(file); }),
                AllOf(HasSubstr("grande.xml"), HasSubstr(" bytes, o máximo que o programa lê")));

    WriteTestFile(file, std::string(1000, 'x'));
    EXPECT_EQ(ReadWholeFile(file, 1000).size(), 1000U);
    EXPECT_THROW(ReadWholeFile(file, 999), EFileNotRead);
    for (const std::size_t size : {0U, 1000U, 200'000U}) {
        std::istringstream stream(std::string(size, 'x'));
        EXPECT_EQ(ReadWholeStream(stream, "-", 200'000).size(), size);
    }
    std::istringstream stream(std::string(1'000'000, 'x'));
    EXPECT_THAT(TextOf<EFileNotRead>([&] { ReadWholeStream(stream, "-", 999); }),
                HasSubstr(" bytes, o máximo que o programa lê"));
    EXPECT_LT(stream.tellg(), 100'000) << "no more is read than it takes to know";
}

// ---- writing

TEST(WriteFileAtomically, WritesNewFilesAndReplacesOldOnes) {
    const TTemporaryFolder folder;
    const std::string longName(255, 'n');
    const fs::path before = fs::current_path();
    fs::current_path(folder.Path());
    for (const std::string& name : {std::string("guia ç.xml"), longName}) // without a folder
        for (const std::string& bytes :
             {std::string("novo\0\n", 6), std::string(300'000, 'x'), std::string()}) {
            WriteFileAtomically(PathOf(name), bytes);
            EXPECT_EQ(ReadTestFile(folder / name), bytes);
        }
    fs::current_path(before);
    EXPECT_THAT(folder.Names(), ElementsAre("guia ç.xml", longName));
}

TEST(WriteFileAtomically, RefusesWhatItCouldNotKeep) {
    const TTemporaryFolder folder;
    WriteTestFile(folder / "lote.xml", "velho");
    fs::create_hard_link(folder / "lote.xml", folder / "outro-nome.xml");
    EXPECT_THAT(TextOf<EFileNotWritten>([&] { WriteFileAtomically(folder / "lote.xml", "novo"); }),
                HasSubstr("outros nomes (ligações físicas)"));
    fs::remove(folder / "outro-nome.xml");
    EXPECT_THAT(folder.Names(), ElementsAre("lote.xml"));
}

TEST(WriteFileAtomically, RemovesWhatKilledWritersLeft) {
    const TTemporaryFolder folder;
    for (const char* name : {".conferix-1-00.tmp", ".conferix-2-00.tmp", "meu.tmp"})
        WriteTestFile(folder / name, "<a");
    const TFileLock living(folder / ".conferix-2-00.tmp", true);
    WriteFileAtomically(folder / "lote.xml", "novo");
    EXPECT_THAT(folder.Names(), ElementsAre(".conferix-2-00.tmp", "lote.xml", "meu.tmp"));
}

TEST(WriteFileAtomically, LeavesNothingBehindWhenItFails) {
    const TTemporaryFolder folder;
    WriteTestFile(folder / "arquivo", "velho");
    fs::create_directory(folder / "pasta");
    const auto names = folder.Names();
    const struct {
        const char* Name;
        std::string Reason;
    } cases[] = {
        {"pasta", "é uma pasta, não um arquivo"},
        {"falta/novo.xml", "a pasta \"" + (folder / "falta").string() + "\" não existe"},
        {"arquivo/novo.xml", "uma parte do caminho não é uma pasta"},
    };
    for (const auto& c : cases) {
        const fs::path file = folder / c.Name;
        EXPECT_EQ(TextOf<EFileNotWritten>([&] { WriteFileAtomically(file, "novo"); }),
                  "Não foi possível gravar o arquivo \"" + file.string() + "\": " + c.Reason);
        EXPECT_EQ(folder.Names(), names) << c.Name;
    }
    EXPECT_EQ(ReadTestFile(folder / "arquivo"), "velho");
}

TEST(WriteFileAtomically, RefusesAWriteProtectedFile) {
    if (NothingIsWriteProtected())
        GTEST_SKIP() << "nothing is write-protected for an administrator";
    const TTemporaryFolder folder;
    WriteTestFile(folder / "lote.xml", "velho");
    fs::permissions(folder / "lote.xml", static_cast<fs::perms>(0444));
    EXPECT_THAT(TextOf<EFileNotWritten>([&] { WriteFileAtomically(folder / "lote.xml", "novo"); }),
                HasSubstr("acesso negado"));
    fs::permissions(folder / "lote.xml", fs::perms::owner_write, fs::perm_options::add);
}

// ---- places

TEST(CreateFolder, CreatesParentsAndAcceptsWhatIsThere) {
    const TTemporaryFolder folder;
    CreateFolder(folder / "a/b/c");
    CreateFolder(folder / "a/b/c");
    EXPECT_TRUE(fs::is_directory(folder / "a/b/c"));
    WriteTestFile(folder / "arquivo", "x");
    for (const char* name : {"arquivo", "arquivo/pasta"}) {
        EXPECT_THAT(TextOf<EFolderNotCreated>([&] { CreateFolder(folder / name); }),
                    AllOf(HasSubstr("Não foi possível criar a pasta"), HasSubstr(name),
                          HasSubstr("uma parte do caminho não é uma pasta")));
    }
}

TEST(ExecutablePath, NamesThisProgram) {
    EXPECT_EQ(ExecutablePath().stem(), "tests_platform");
    EXPECT_TRUE(fs::is_regular_file(ExecutablePath()));
}

TEST(IsTerminal, TellsThatAFileIsNone) {
    const TTemporaryFolder folder;
    std::FILE* file = std::fopen((folder / "saida").string().c_str(), "w");
    ASSERT_NE(file, nullptr);
    EXPECT_FALSE(IsTerminal(file));
    std::fclose(file);
}

} // namespace
} // namespace conferix
