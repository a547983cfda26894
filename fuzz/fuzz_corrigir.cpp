// The laws of correcting everything: what comes out is XML, nothing but the corrected values has changed, and
// there is nothing left to correct.
#include "app/execute_solver.h"
#include "tiss_target.h"

#include <algorithm>
#include <set>

using namespace conferix;

namespace {

/// A text without the elements of some names that hold a value, and those elements.
struct TSkeleton {
    std::string Text;
    std::vector<std::string> Cut;
};

TSkeleton SkeletonOf(const std::shared_ptr<const std::string>& text, const std::set<std::string>& names) {
    const TXmlParseResult parsed = TXmlParser::Parse(text);
    Demand(parsed.Document != nullptr, "a corrected text is XML");
    TSkeleton skeleton;
    std::size_t at = 0;
    const TXmlNode& root = parsed.Document->Root();
    for (const TXmlNode* node = &root; node != nullptr; node = node->NextInWalk(&root)) {
        if (!node->IsTag() || node->FirstChildTag() != nullptr ||
            names.count(std::string(node->LocalName())) == 0)
            continue;
        skeleton.Text.append(*text, at, node->ByteStart() - at);
        skeleton.Cut.push_back(text->substr(node->ByteStart(), node->ByteEnd() - node->ByteStart()));
        at = node->ByteEnd();
    }
    skeleton.Text.append(*text, at);
    return skeleton;
}

void DemandOnlyValuesChanged(const std::shared_ptr<const std::string>& before,
                             const TCorrectionResult& result) {
    std::set<std::string> names;
    for (const TCorrectionRecord& record : result.Applied) {
        if (record.Element.empty())
            return; // prefixes and the like: of the document as a whole
        names.insert(record.Element);
    }
    const TSkeleton old = SkeletonOf(before, names);
    const TSkeleton now = SkeletonOf(result.Xml, names);
    Demand(old.Text == now.Text && old.Cut.size() == now.Cut.size(), "only corrected elements change");
    std::size_t changed = 0;
    for (std::size_t i = 0; i < old.Cut.size(); ++i)
        changed += old.Cut[i] != now.Cut[i] ? 1 : 0;
    Demand(changed <= result.Applied.size(), "only the values told of change");
}

TCorrectionResult Correct(TTissRun& run, const std::shared_ptr<const std::string>& text) {
    return CorrectAll(run.Controller(), text, AllRulesEnabled(),
                      [](const auto&) -> std::optional<std::size_t> { return 0; });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TTissRun run;
    if (!run.Open(BytesOf(data, size)))
        return 0;
    const auto before = run.Text();
    const TCorrectionResult once = Correct(run, before);
    if (!run.Result().ValidXml) {
        Demand(*once.Xml == *before, "what is no XML is left as it is");
        return 0;
    }
    DemandOnlyValuesChanged(before, once);
    Demand(*Correct(run, once.Xml).Xml == *once.Xml, "correcting twice is correcting once");
    return 0;
}
