// Look-ups in a terminology database, of codes that its tables 19 and 64 hold and of codes that they lack.
// Usage: bench_terminologia DATABASE [Google Benchmark options]

#include "data/tuss_connection.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

std::vector<std::string> codes;
std::unique_ptr<conferix::TTussConnection> connection;

template<typename TLookUp>
void Run(benchmark::State& state, TLookUp lookUp) {
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(lookUp(codes[next]));
        next = (next + 1) % codes.size();
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_terminologia DATABASE [options]\n");
        return 2;
    }
    {
        const SQLite::Database database(argv[1]);
        SQLite::Statement query(database, "SELECT CODIGO FROM TB_TUSS_19");
        while (query.executeStep())
            codes.push_back(query.getColumn(0).getString());
    }
    if (codes.empty()) {
        std::fprintf(stderr, "table 19 is empty\n");
        return 2;
    }
    std::shuffle(codes.begin(), codes.end(), std::minstd_rand());
    connection = std::make_unique<conferix::TTussConnection>(argv[1]);
    argv[1] = argv[0];
    ++argv;
    --argc;
    benchmark::Initialize(&argc, argv);
    benchmark::RegisterBenchmark("Start of validity", [](benchmark::State& state) {
        Run(state, [](const std::string& code) { return connection->StartOfValidity("19", code).Found; });
    });
    benchmark::RegisterBenchmark("Inactivation, none", [](benchmark::State& state) {
        Run(state, [](const std::string& code) { return connection->Inactivation("19", code).Found; });
    });
    benchmark::RegisterBenchmark("Table 64", [](benchmark::State& state) {
        Run(state, [](const std::string& code) { return connection->Table64("19", code).size(); });
    });
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
