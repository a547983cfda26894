// Writes the terminology database that is delivered with the program, from the lists of codes in
// dados/. The same lists give the same bytes.
#include "data/tuss_writer.h"
#include "platform/platform.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <iostream>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

namespace fs = std::filesystem;
using namespace conferix;

constexpr std::size_t kCityDigits = 7;
constexpr std::size_t kCityDigitsWithoutCheck = 6;

// The codes of a list: one a line, all of the same count of digits; "#" begins a comment line.
std::set<std::string> ReadCodes(const fs::path& file, std::size_t digits) {
    const std::string content = ReadWholeFile(file);
    std::set<std::string> codes;
    std::string_view rest = content;
    for (int number = 1; !rest.empty(); ++number) {
        const std::size_t length = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, length);
        rest.remove_prefix(std::min(length + 1, rest.size()));
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        if (!line.empty() && line.front() == '#') {
            continue;
        }
        const std::string place = PathText(file) + ":" + std::to_string(number) + ": ";
        if (line.size() != digits || line.find_first_not_of("0123456789") != std::string_view::npos) {
            throw std::runtime_error(place + "esperado um código de " + std::to_string(digits) + " dígitos");
        }
        if (!codes.emplace(line).second) {
            throw std::runtime_error(place + "código repetido");
        }
    }
    if (codes.empty()) {
        throw std::runtime_error(PathText(file) + ": nenhum código");
    }
    return codes;
}

void WriteDatabase(const fs::path& lists, const fs::path& database) {
    TTussWriter writer(database);
    for (const std::string& code : ReadCodes(lists / "tuss63.txt", 3)) {
        writer.Insert(TTuss63{{code, {}, {}}});
    }
    for (const std::string& code : ReadCodes(lists / "tuss87.txt", 2)) {
        writer.Insert(TTuss87{{code, {}, {}}});
    }
    for (const std::string& code : ReadCodes(lists / "municipios.txt", kCityDigits)) {
        writer.Insert(TCidade{code});
        writer.Insert(TCidade{code.substr(0, kCityDigitsWithoutCheck)});
    }
    writer.Commit();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "uso: conferix_generate_tuss PASTA-DAS-LISTAS ARQUIVO\n";
        return 2;
    }
    const fs::path database = argv[2];
    fs::path unfinished = database;
    unfinished += ".novo";
    std::error_code ignored;
    fs::remove(unfinished, ignored);
    try {
        WriteDatabase(argv[1], unfinished);
        fs::rename(unfinished, database);
    } catch (const std::exception& error) {
        std::cerr << "conferix_generate_tuss: erro: " << error.what() << '\n';
        fs::remove(unfinished, ignored);
        return 1;
    }
    return 0;
}
