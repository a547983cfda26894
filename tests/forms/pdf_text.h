// What stands in a PDF file that the program wrote.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include <zlib.h>

namespace conferix {

/// The content streams of a file, unpacked.
inline std::vector<std::string> PdfStreams(std::string_view pdf) {
    std::vector<std::string> streams;
    constexpr std::string_view kBegin = "stream\n";
    constexpr std::string_view kEnd = "\nendstream";
    for (std::size_t at = pdf.find(">>\nstream\n"); at != std::string_view::npos;
         at = pdf.find(">>\nstream\n", at)) {
        at += 3 + kBegin.size();
        const std::size_t end = pdf.find(kEnd, at);
        std::string content(4'000'000, '\0');
        auto size = static_cast<uLongf>(content.size());
        EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(content.data()), &size,
                             reinterpret_cast<const Bytef*>(pdf.data()) + at, static_cast<uLong>(end - at)),
                  Z_OK);
        content.resize(size);
        streams.push_back(std::move(content));
    }
    return streams;
}

/// The texts that a file shows, in Windows-1252, a line each.
inline std::string PdfTexts(std::string_view pdf) {
    std::string texts;
    for (const std::string& stream : PdfStreams(pdf)) {
        for (std::size_t at = stream.find("Td ("); at != std::string::npos; at = stream.find("Td (", at)) {
            for (at += 4; stream[at] != ')'; ++at) {
                at += stream[at] == '\\' ? 1 : 0;
                texts += stream[at];
            }
            texts += '\n';
        }
    }
    return texts;
}

} // namespace conferix
