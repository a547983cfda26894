#include "app/recoding.h"

#include "app/message_groups.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace conferix {

TXmlRecoding RecodeFile(const std::string& text, const TXmlEncoding& held, const std::string& encoding) {
    const auto misreading = FindMisreading(text, held);
    const std::string_view content = FromDeclaration(text);
    TXmlRecoding recoding =
        RecodeXml(misreading ? MeantText(content, *misreading) : std::string(content), encoding);
    if (misreading && misreading->OfLetters()) {
        TXmlMessages changed = WordsToChange(text, *misreading);
        recoding.Replaced.insert(recoding.Replaced.begin(), std::make_move_iterator(changed.begin()),
                                 std::make_move_iterator(changed.end()));
    }
    return recoding;
}

TXmlRecoding HoldInEncoding(TValidadorController& controller, const TTissFile& file,
                            const std::string& encoding) {
    TXmlRecoding recoding = RecodeFile(*file.Text(), file.Encoding(), encoding);
    controller.SetEncoding(EncodingToWrite(recoding.Text, {}));
    return recoding;
}

TRecodingList ListRecoding(const TXmlMessages& replaced, std::size_t most) {
    const std::vector<TMessageGroup> groups = GroupMessages(replaced);
    const std::size_t shown = most == 0 ? groups.size() : std::min(most, groups.size());
    TRecodingList list;
    for (std::size_t i = 0; i < groups.size(); ++i)
        if (i < shown)
            list.Lines.push_back(GroupText(replaced, groups[i]));
        else
            list.Further += groups[i].Count;
    return list;
}

} // namespace conferix
