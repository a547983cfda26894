// The list of messages of the window: 100,000 of 133 rules and 10,000 guides made ready, sorted, filtered and
// grouped.

#include "app/message_table.h"
#include "validation/identity.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

namespace {

using namespace conferix;

constexpr int kMessages = 100'000;
constexpr int kGuides = 10'000;
constexpr int kRules = 133;

class TFinding : public TXmlMessage {
  public:
    TFinding(TMessageOrigin origin, int number)
        : TXmlMessage(std::move(origin), number % 7 == 0 ? TMessageType::mtWarning : TMessageType::mtError,
                      "O valor total do procedimento deve considerar a quantidade e o fator. O valor "
                      "encontrado foi " +
                          std::to_string(number * 7 % 100'000) + ".00, porém o esperado é " +
                          std::to_string(number % 1'000) + ".50.",
                      {}, number * 9 + 1, 15, number * 400) {}
};

const TXmlMessages& Messages() {
    static const TXmlMessages kAll = [] {
        std::vector<std::shared_ptr<const TValidationIdentity>> rules;
        for (int i = 0; i < kRules; ++i)
            rules.push_back(std::make_shared<const TValidationIdentity>(TValidationIdentity{
                "tiss.regra" + std::to_string(i), "Descrição da regra " + std::to_string(i), false}));
        TXmlMessages messages;
        for (int i = 0; i < kMessages; ++i)
            messages.push_back(std::make_shared<TFinding>(
                TMessageOrigin{rules[static_cast<std::size_t>(i % kRules)],
                               std::to_string(10'000'000 + i * 31 % kGuides), "045"},
                i));
        return messages;
    }();
    return kAll;
}

std::shared_ptr<const TMessageDigest> Digest() {
    static const auto kDigest = std::make_shared<const TMessageDigest>(Messages());
    return kDigest;
}

void MakeReady(benchmark::State& state) {
    Messages();
    for (auto _ : state)
        benchmark::DoNotOptimize(TMessageDigest(Messages()).Causes().size());
}

void Sort(benchmark::State& state) {
    TMessageTable table;
    table.SetDigest(Digest());
    table.SetGrouping(TMessageGrouping::None);
    bool descending = false;
    for (auto _ : state)
        table.Sort(static_cast<TMessageColumn>(state.range(0)), descending = !descending);
}

void Filter(benchmark::State& state) {
    TMessageTable table;
    table.SetDigest(Digest());
    table.SetGrouping(static_cast<TMessageGrouping>(state.range(0)));
    for (auto _ : state) {
        TMessageFilter filter;
        filter.Text = "PROCEDIMENTO fator 999";
        table.SetFilter(filter);
        table.SetFilter({});
    }
}

} // namespace

BENCHMARK(MakeReady)->Unit(benchmark::kMillisecond);
BENCHMARK(Sort)->DenseRange(0, 6)->Unit(benchmark::kMillisecond);
BENCHMARK(Filter)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
