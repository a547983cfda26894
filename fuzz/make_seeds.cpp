// Writes the seeds of all targets, a folder each, and the dictionary: the examples in every encoding,
// packages and workbooks made of them, the schemas, and the names and codes of the schema model.
#include "platform/platform.h"
#include "schema_model/schema_model.h"
#include "xml/xml_encoding.h"

#include <zip.h>

#include <exception>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace conferix;
namespace fs = std::filesystem;

constexpr std::size_t kLargestSeed = 32'000; // longer ones cost more runs than they are worth

using TFiles = std::map<std::string, std::string>; ///< content by name

TFiles FilesOf(const fs::path& folder, std::string_view ending) {
    TFiles files;
    for (const auto& entry : fs::directory_iterator(folder))
        if (const std::string name = PathText(entry.path().filename()); name.ends_with(ending))
            files[name] = ReadWholeFile(entry.path());
    return files;
}

void Write(const fs::path& folder, const std::string& name, const std::string& content) {
    CreateFolder(folder);
    WriteFileAtomically(folder / PathFromText(name), content);
}

/// The text in each encoding that the reader knows, by a name for the file.
TFiles InAllEncodings(std::string text) {
    const std::string_view declared = DeclaredEncoding(text);
    const std::size_t at = declared.empty() ? 0 : static_cast<std::size_t>(declared.data() - text.data());
    TFiles files;
    const auto add = [&](const char* declaration, const char* name, bool bom) {
        std::string copy = text;
        if (!declared.empty())
            copy.replace(at, declared.size(), declaration);
        try {
            files[std::string(name) + (bom ? "-bom" : "")] = EncodeXml(copy, {name, bom, nullptr});
        } catch (const EXmlEncoding&) {
            // A comment has a letter that the encoding lacks.
        }
    };
    for (const char* name : {"ISO-8859-1", "ISO-8859-15", "windows-1252", "windows-1250", "US-ASCII",
                             "IBM850", "macintosh", "UTF-8"})
        add(name, name, false);
    add("UTF-8", "UTF-8", true);
    for (const char* name : {"UTF-16LE", "UTF-16BE"})
        for (const bool bom : {false, true})
            add("UTF-16", name, bom);
    return files;
}

std::string Zip(const fs::path& file, const std::vector<std::pair<std::string, std::string>>& entries) {
    zip_t* archive = zip_open(file.c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    if (archive == nullptr)
        throw std::runtime_error("zip_open");
    for (const auto& [name, content] : entries)
        zip_file_add(archive, name.c_str(), zip_source_buffer(archive, content.data(), content.size(), 0),
                     ZIP_FL_ENC_UTF_8);
    if (zip_close(archive) != 0)
        throw std::runtime_error("zip_close");
    return ReadWholeFile(file);
}

/// A sheet with the cells of a text, and the parts that a workbook has beside it.
std::vector<std::pair<std::string, std::string>> WorkbookOf(const std::string& csv) {
    std::string shared;
    std::string sheet;
    std::size_t texts = 0;
    for (std::size_t at = 0, row = 1; at < csv.size(); ++row) {
        const std::size_t end = std::min(csv.find('\n', at), csv.size());
        std::string cells;
        for (char column = 'A'; at <= end && column <= 'Z'; ++column) {
            const std::size_t next = std::min(csv.find_first_of(";\n", at), end);
            shared += "<si><t>" + csv.substr(at, next - at) + "</t></si>";
            cells += "<c r=\"" + (column + std::to_string(row)) + "\" t=\"s\"><v>" + std::to_string(texts++) +
                     "</v></c>";
            at = next + 1;
        }
        sheet += "<row r=\"" + std::to_string(row) + "\">" + cells + "</row>";
        at = end + 1;
    }
    return {{"xl/s.xml", "<worksheet><sheetData>" + sheet + "</sheetData></worksheet>"},
            {"xl/sharedStrings.xml", "<sst>" + shared + "</sst>"},
            {"xl/workbook.xml",
             "<workbook xmlns:r='r'><sheets><sheet name='Tab 22' r:id='a'/></sheets></workbook>"},
            {"xl/_rels/workbook.xml.rels",
             "<Relationships><Relationship Id='a' Target='s.xml'/></Relationships>"}};
}

void Collect(const TModelNode& node, std::set<std::string>& words) {
    if (!node.Name.empty())
        words.insert(node.Name.substr(node.Name.find(':') + 1));
    for (const TModelNode& child : node.Children)
        Collect(child, words);
}

/// The words of all models as lines of a dictionary.
std::string DictionaryOf(const fs::path& modelFolder) {
    std::set<std::string> words;
    for (const auto& model : LoadSchemaModels(modelFolder)) {
        for (const std::string& version : model->Versions())
            words.insert(version);
        for (const TModelNode& element : model->Elements())
            Collect(element, words);
        for (const TModelComplexType& type : model->ComplexTypes())
            for (const TModelNode& child : type.Children)
                Collect(child, words);
    }
    std::string lines;
    for (const std::string& word : words)
        lines += '"' + word + "\"\n";
    return lines;
}

void WriteAll(const fs::path& source, const fs::path& schemas, const fs::path& target) {
    const TFiles examples = FilesOf(source / "exemplos", ".xml");
    for (const auto& [name, content] : examples) {
        // The rules look at text: one encoding does. What a corrector has to do stands in the faulty ones.
        Write(target / "fuzz_validar", name, content);
        Write(target / "fuzz_corrigir", name, content);
        for (const auto& [encoding, bytes] : InAllEncodings(DecodeXml(content).Text)) {
            Write(target / "fuzz_codificacao", encoding + "-" + name, bytes);
            if (encoding.starts_with("UTF-8"))
                Write(target / "fuzz_reader", encoding + "-" + name, bytes);
            else if (name.starts_with("consulta"))
                Write(target / "fuzz_validar", encoding + "-" + name, bytes);
        }
    }
    for (const auto& [name, content] : FilesOf(source / "tests/xml/schema/cases", ".xsd"))
        Write(target / "fuzz_esquema", name, content);
    std::vector<std::pair<std::string, std::string>> package;
    for (const auto& [name, content] : FilesOf(schemas, ".xsd")) {
        if (content.size() > kLargestSeed)
            continue;
        Write(target / "fuzz_esquema", name, content);
        package.emplace_back("pasta/" + name, content);
    }
    Write(target / "fuzz_pacote", "esquemas.zip", Zip(target / "pacote.zip", package));
    std::string names;
    for (const char* ending : {".csv", ".txt"})
        for (const auto& [name, content] : FilesOf(source / "exemplos/terminologia", ending)) {
            Write(target / "fuzz_importar", name, content);
            names += name + '\f' + content + '\f';
            const auto book = WorkbookOf(content);
            Write(target / "fuzz_planilha", name + ".xlsx", Zip(target / "pacote.zip", book));
            std::string parts;
            for (const auto& [part, text] : book)
                parts += (parts.empty() ? "" : "\f") + text;
            Write(target / "fuzz_planilha", name, parts);
            Write(target / "fuzz_pacote", name + ".zip",
                  Zip(target / "pacote.zip",
                      {{name, content}, {name + ".xlsx", Zip(target / "livro.zip", book)}}));
        }
    Write(target / "fuzz_pacote", "pares", names);
    Write(
        target / "fuzz_importar", "registros.json",
        R"([{"tabela":"22","codigo":"10101012","termo":"Consulta","inicio":"2020-01-01","dados":{"fim":"01/02/2024"}}])");
    Write(target, "conferix.dict",
          ReadWholeFile(source / "fuzz/tiss.dict") + DictionaryOf(source / "resources/schema_model"));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "uso: conferix_make_seeds PASTA-DO-PROJETO PASTA-DOS-SCHEMAS PASTA\n";
        return 2;
    }
    try {
        WriteAll(argv[1], argv[2], argv[3]);
    } catch (const std::exception& error) {
        std::cerr << "conferix_make_seeds: erro: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
