// An import whose process is killed or may write no more: the database is then as it was.
#include "data/import_fixture.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace conferix {
namespace {

class ImportEnd : public ImportsOverOlder {
  protected:
    /// Runs a part in a process of its own and gives its wait status.
    template<typename TPart>
    static int InChild(TPart part) {
        const pid_t child = fork();
        if (child == 0)
            _exit(part());
        int status = -1;
        waitpid(child, &status, 0);
        return status;
    }
};

TEST_F(ImportEnd, IsThatOfItsProcessOrOfTheSpace) {
    WriteMany();
    for (const double when : {0.0, 0.3, 0.8}) {
        TImportOptions options = Options();
        options.OnProgress = [when](const std::string&, double fraction) {
            if (fraction >= when)
                raise(SIGKILL);
        };
        EXPECT_TRUE(WIFSIGNALED(InChild([&] {
            ImportTerminology(options);
            return 0;
        })));
        EXPECT_EQ(ReadTestFile(Database()), before_) << when;
    }
    for (const rlim_t space : {60'000U, 400'000U, 1'000'000U}) {
        const int status = InChild([&] {
            const rlimit limit{space, space};
            signal(SIGXFSZ, SIG_IGN);
            setrlimit(RLIMIT_FSIZE, &limit);
            try {
                ImportTerminology(Options());
            } catch (const EFile& error) {
                return error.Reason().empty() ? 1 : 7;
            }
            return 2;
        });
        EXPECT_EQ(WEXITSTATUS(status), 7) << space;
        ExpectUntouched();
    }
    EXPECT_EQ(ImportTerminology(Options()).Tables.at("18").Added, 20000);
}

} // namespace
} // namespace conferix
