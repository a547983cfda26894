// Building the tree of a file, beside the XML parser alone on the same bytes.
// Usage: bench_arvore FILE [Google Benchmark options]

#include "xml/xml_encoding.h"
#include "xml/xml_parser.h"
#include "xml/xml_writer.h"

#include <benchmark/benchmark.h>
#include <expat.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

namespace {

std::shared_ptr<const std::string> text;

void XMLCALL CountTag(void* data, const XML_Char*, const XML_Char**) {
    ++*static_cast<long*>(data);
}
void XMLCALL EndTag(void*, const XML_Char*) {}
void XMLCALL CountText(void*, const XML_Char*, int) {}

void ParserAlone(benchmark::State& state) {
    for (auto _ : state) {
        long tags = 0;
        const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate("UTF-8"),
                                                                                  &XML_ParserFree);
        XML_SetUserData(parser.get(), &tags);
        XML_SetElementHandler(parser.get(), CountTag, EndTag);
        XML_SetCharacterDataHandler(parser.get(), CountText);
        if (XML_Parse(parser.get(), text->data(), static_cast<int>(text->size()), XML_TRUE) != XML_STATUS_OK)
            state.SkipWithError("the file is not well formed");
        benchmark::DoNotOptimize(tags);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text->size()));
}

void BuildTree(benchmark::State& state) {
    for (auto _ : state) {
        const conferix::TXmlParseResult result = conferix::TXmlParser::Parse(text);
        if (result.Document == nullptr)
            state.SkipWithError("the file is not well formed");
        benchmark::DoNotOptimize(result.Document);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text->size()));
}

void WriteAfterOneChange(benchmark::State& state) {
    const auto document = conferix::TXmlParser::Parse(text).Document;
    document->Element()->SetAttribute("mudado", "1");
    for (auto _ : state)
        benchmark::DoNotOptimize(conferix::WriteXml(*document));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text->size()));
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_arvore FILE [options]\n");
        return 2;
    }
    std::ifstream file(argv[1], std::ios::binary);
    text = std::make_shared<const std::string>(
        conferix::DecodeXml({std::istreambuf_iterator<char>(file), {}}).Text);
    argv[1] = argv[0];
    ++argv;
    --argc;
    benchmark::Initialize(&argc, argv);
    benchmark::RegisterBenchmark("Parser alone", ParserAlone)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Build tree", BuildTree)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Write after one change", WriteAfterOneChange)
        ->Unit(benchmark::kMillisecond);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
