// Pipes, links, owners, limits and locales as POSIX has them.
#include "platform/format_settings.h"
#include "platform/platform.h"
#include "support/system.h"
#include "support/test_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include <fcntl.h>
#include <locale.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace conferix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

unsigned Mode(const fs::path& file) {
    return static_cast<unsigned>(fs::status(file).permissions());
}

// ---- reading

TEST(ReadWholeFile, GivesAllBytesOfAPipeAndOfWhatTellsNoSize) {
    const TTemporaryFolder folder;
    const fs::path pipe = folder / "cano";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& content : {std::string(), std::string("a\0\xFF\r\n", 5), std::string(65536, 'p'),
                                       std::string(1'000'003, 'x')}) {
        std::thread sender([&] { WriteTestFile(pipe, content); });
        EXPECT_EQ(ReadWholeFile(pipe), content);
        sender.join();
    }
    EXPECT_THAT(ReadWholeFile("/proc/self/status"), HasSubstr("VmSize"));
}

TEST(ReadWholeFile, APipeWithNobodyAtTheOtherEndIsRefused) {
    const TTemporaryFolder folder;
    for (const char* name : {"ler", "gravar"})
        ASSERT_EQ(mkfifo((folder / name).c_str(), 0600), 0);
    std::thread writing([&] {
        EXPECT_THAT(TextOf<EFileNotWritten>([&] { WriteFileAtomically(folder / "gravar", "x"); }),
                    HasSubstr("é um canal (FIFO) de que nenhum programa lê"));
    });
    EXPECT_THAT(TextOf<EFileNotRead>([&] { ReadWholeFile(folder / "ler"); }),
                HasSubstr("é um canal (FIFO) em que nenhum programa escreve"));
    writing.join();
}

TEST(ReadWholeFile, RefusesMoreThanTheLimitFromAPipe) {
    const TTemporaryFolder folder;
    const fs::path pipe = folder / "cano";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::size_t limit : {199'999U, 200'000U}) {
        // Not to be ended by the signal when the reader stops early.
        std::signal(SIGPIPE, SIG_IGN);
        std::thread sender([&] { WriteTestFile(pipe, std::string(200'000, 'p')); });
        if (limit < 200'000U)
            EXPECT_THROW(ReadWholeFile(pipe, limit), EFileNotRead);
        else
            EXPECT_EQ(ReadWholeFile(pipe, limit).size(), limit);
        sender.join();
    }
}

// ---- writing

TEST(WriteFileAtomically, KeepsThePermissionsOfAnOldFileAndGivesANewOneTheUsual) {
    const TTemporaryFolder folder;
    const mode_t before = umask(027);
    WriteFileAtomically(folder / "novo", "1");
    EXPECT_EQ(Mode(folder / "novo"), 0640U);
    for (const unsigned mode : {0600U, 0644U, 0666U, 0755U}) {
        fs::permissions(folder / "novo", static_cast<fs::perms>(mode));
        WriteFileAtomically(folder / "novo", "2");
        EXPECT_EQ(Mode(folder / "novo"), mode);
    }
    umask(before);
}

TEST(WriteFileAtomically, KeepsTheOwnerOfAnOldFile) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only an administrator has files of others to replace";
    const TTemporaryFolder folder;
    const fs::path file = folder / "de-outro.xml";
    WriteTestFile(file, "1");
    ASSERT_EQ(chown(file.c_str(), 1234, 4321), 0);
    fs::permissions(file, static_cast<fs::perms>(0660));
    WriteFileAtomically(file, "2");
    struct stat info = {};
    ASSERT_EQ(stat(file.c_str(), &info), 0);
    EXPECT_EQ(std::pair(info.st_uid, info.st_gid), std::pair(uid_t{1234}, gid_t{4321}));
    EXPECT_EQ(Mode(file), 0660U);
}

TEST(WriteFileAtomically, KeepsExtendedAttributes) {
    const TTemporaryFolder folder;
    WriteTestFile(folder / "lote.xml", "velho");
    const std::string note = "de ontem";
    if (setxattr((folder / "lote.xml").c_str(), "user.nota", note.data(), note.size(), 0) == 0) {
        WriteFileAtomically(folder / "lote.xml", "novo");
        std::string kept(note.size(), '\0');
        EXPECT_EQ(getxattr((folder / "lote.xml").c_str(), "user.nota", kept.data(), kept.size()),
                  static_cast<ssize_t>(note.size()));
        EXPECT_EQ(kept, note);
    }
}

TEST(WriteCopyAtomically, IsAsAccessibleAsItsOriginal) {
    const TTemporaryFolder folder;
    WriteTestFile(folder / "lote.xml", "1");
    fs::permissions(folder / "lote.xml", static_cast<fs::perms>(0640));
    WriteCopyAtomically(folder / "copia", "1", folder / "lote.xml");
    EXPECT_EQ(Mode(folder / "copia"), 0640U);
    WriteCopyAtomically(folder / "sem-original", "1", folder / "nenhum.xml");
    EXPECT_EQ(Mode(folder / "sem-original"), 0600U);
}

TEST(SymbolicLinks, AreFollowed) {
    const TTemporaryFolder folder;
    fs::create_directory(folder / "longe");
    WriteTestFile(folder / "longe/alvo", "1");
    fs::create_symlink("longe/alvo", folder / "atalho");
    fs::create_symlink(folder / "atalho", folder / "atalho2");
    fs::create_symlink("longe/ainda-nao", folder / "pendente");

    WriteFileAtomically(folder / "atalho2", "2");
    WriteFileAtomically(folder / "pendente", "3");

    EXPECT_EQ(ReadTestFile(folder / "longe/alvo"), "2");
    EXPECT_EQ(ReadTestFile(folder / "longe/ainda-nao"), "3");
    for (const char* link : {"atalho", "atalho2", "pendente"})
        EXPECT_TRUE(fs::is_symlink(folder / link)) << link;
    EXPECT_FALSE(fs::is_symlink(folder / "longe/alvo"));
    EXPECT_THAT(folder.Names(), ElementsAre("atalho", "atalho2", "longe", "pendente"));

    fs::create_directory_symlink("longe", folder / "pasta");
    CreateFolder(folder / "pasta");
    EXPECT_TRUE(fs::is_symlink(folder / "pasta"));
}

TEST(SymbolicLinks, ThatLeadInACircleAreToldAndStay) {
    const TTemporaryFolder folder;
    fs::create_symlink("b", folder / "a");
    fs::create_symlink("a", folder / "b");
    const fs::path file = folder / "a";
    const std::string reason = "o arquivo \"" + file.string() + "\": há ligações simbólicas em círculo";
    EXPECT_EQ(TextOf<EFileNotRead>([&] { ReadWholeFile(file); }), "Não foi possível ler " + reason);
    EXPECT_EQ(TextOf<EFileNotWritten>([&] { WriteFileAtomically(file, "novo"); }),
              "Não foi possível gravar " + reason);
    EXPECT_THAT(folder.Names(), ElementsAre("a", "b"));
}

TEST(WriteFileAtomically, WritesIntoAPipeAndLeavesItThere) {
    const TTemporaryFolder folder;
    const fs::path pipe = folder / "cano";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] { received = ReadTestFile(pipe); });
    WriteFileAtomically(pipe, std::string(200'000, 'p'));
    reader.join();
    EXPECT_EQ(received, std::string(200'000, 'p'));
    EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST(WriteFileAtomically, KeepsTheOldFileWhenTheDiskTakesNoMore) {
    const TTemporaryFolder folder;
    WriteTestFile(folder / "lote.xml", "velho");
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small = {100'000, before.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::string text =
        TextOf<EFileNotWritten>([&] { WriteFileAtomically(folder / "lote.xml", std::string(500'000, 'x')); });
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_THAT(text, HasSubstr("o arquivo passaria do tamanho permitido"));
    EXPECT_EQ(ReadTestFile(folder / "lote.xml"), "velho");
    EXPECT_THAT(folder.Names(), ElementsAre("lote.xml"));
}

// ---- places

TEST(DataFolder, ComesFromTheEnvironment) {
    using TValue = std::optional<std::string>;
    const struct {
        TValue Dados, Xdg, Home;
        const char* Folder;
    } cases[] = {
        {"/dados/meus", "/xdg", "/home/ana", "/dados/meus"},
        {"relativa", "/xdg", "/home/ana", "relativa"},
        {"", "/xdg", "/home/ana", "/xdg/Brenvo/Conferix"},
        {{}, "/xdg", "/home/ana", "/xdg/Brenvo/Conferix"},
        {{}, "relativa", "/home/ana", "/home/ana/.local/share/Brenvo/Conferix"},
        {{}, "", "/home/ana", "/home/ana/.local/share/Brenvo/Conferix"},
        {{}, {}, "/home/ana", "/home/ana/.local/share/Brenvo/Conferix"},
    };
    for (const auto& c : cases) {
        const TEnvironment dados("CONFERIX_DADOS", c.Dados);
        const TEnvironment xdg("XDG_DATA_HOME", c.Xdg);
        const TEnvironment home("HOME", c.Home);
        EXPECT_EQ(DataFolder(), c.Folder);
        EXPECT_FALSE(fs::exists(DataFolder())) << "asking for the folder is not to create it";
    }
}

TEST(ExecutablePath, IsTheSameWhateverLinkTheProgramWasCalledBy) {
    EXPECT_EQ(ExecutablePath().filename(), "tests_platform");
    if (std::getenv("CONFERIX_LINKED") != nullptr)
        return;
    const TTemporaryFolder folder;
    const TEnvironment linked("CONFERIX_LINKED", "1");
    fs::create_symlink(ExecutablePath(), folder / "outro-nome");
    EXPECT_EQ(RunProgram({(folder / "outro-nome").string(), "--gtest_filter=ExecutablePath.*"}), 0);
}

TEST(FormatSettings, SeparatorsAreThoseOfTheUsersLocale) {
    const std::pair<const char*, const char*> cases[] = {
        {"C", "-1.234.567,89"},
        {"POSIX", "-1.234.567,89"},
        {"C.UTF-8", "-1.234.567,89"},
        {"pt_BR.UTF-8", "-1.234.567,89"},
        {"pt_BR.ISO-8859-1", "-1.234.567,89"},
        {"en_US.UTF-8", "-1,234,567.89"},
        {"fr_FR.UTF-8", "-1\u202F234\u202F567,89"},
        {"nb_NO.ISO-8859-1", "-1\u00A0234\u00A0567,89"},
        {"xx_XX.UTF-8", "-1.234.567,89"}, // there is none of that name
    };
    for (const auto& [locale, text] : cases) {
        const locale_t installed = newlocale(LC_NUMERIC_MASK, locale, nullptr);
        if (installed == nullptr && !std::string_view(locale).starts_with("xx"))
            continue; // that of Brazil is, where the tests are set up
        if (installed != nullptr)
            freelocale(installed);
        const TEnvironment environment("LC_ALL", locale);
        EXPECT_EQ(TFormatSettings::OfLocale(RegionalSeparators()).Money(-1234567.891), text) << locale;
        EXPECT_STREQ(setlocale(LC_ALL, nullptr), "C") << "the locale of the process was changed";
    }
}

TEST(IsTerminal, TellsATerminal) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0)
        GTEST_SKIP() << "the system gives no pseudo-terminal";
    std::FILE* file = fdopen(terminal, "r+");
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(IsTerminal(file));
    std::fclose(file);
}

} // namespace
} // namespace conferix
