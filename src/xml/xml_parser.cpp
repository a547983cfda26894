#include "xml/xml_parser.h"

#include "xml/cut_text.h"
#include "xml/name_likeness.h"
#include "xml/plain_reader.h"
#include "xml/tree_maker.h"
#include "xml/xml_position.h"

#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace conferix {

namespace {

constexpr std::string_view kDeclaration = "<?xml";

const char* ErrorText(XML_Error error) {
    switch (error) {
    case XML_ERROR_NO_ELEMENTS:
        return "O arquivo não contém nenhum elemento XML.";
    case XML_ERROR_INVALID_TOKEN:
        return "O XML está malformado: há um caractere que não pode aparecer nesta posição. Verifique os "
               "sinais \"<\", \">\", \"&\" e as aspas; no conteúdo, escreva \"&\" como \"&amp;\" e \"<\" "
               "como "
               "\"&lt;\".";
    case XML_ERROR_UNCLOSED_TOKEN:
        return "O XML termina no meio de uma tag; o arquivo pode estar incompleto.";
    case XML_ERROR_PARTIAL_CHAR:
        return "O XML termina no meio de um caractere; o arquivo pode estar incompleto.";
    case XML_ERROR_TAG_MISMATCH:
        return "A tag de fechamento não corresponde à tag que está aberta.";
    case XML_ERROR_DUPLICATE_ATTRIBUTE:
        return "O mesmo atributo aparece duas vezes na tag.";
    case XML_ERROR_JUNK_AFTER_DOC_ELEMENT:
        return "Há conteúdo depois do fim do elemento raiz.";
    case XML_ERROR_UNDEFINED_ENTITY:
        return "A entidade usada não existe em XML. No conteúdo, escreva \"&\" como \"&amp;\".";
    case XML_ERROR_BAD_CHAR_REF:
        return "A referência numérica indica um caractere que o XML não permite.";
    case XML_ERROR_UNCLOSED_CDATA_SECTION:
        return "A seção CDATA não foi fechada com \"]]>\".";
    case XML_ERROR_MISPLACED_XML_PI:
        return "A declaração XML (<?xml ...?>) deve ser o início do arquivo, sem nada antes dela.";
    case XML_ERROR_XML_DECL:
        return "A declaração XML (<?xml ...?>) está malformada.";
    case XML_ERROR_SYNTAX:
        return "O conteúdo não é XML.";
    case XML_ERROR_RESERVED_PREFIX_XML:
    case XML_ERROR_RESERVED_PREFIX_XMLNS:
    case XML_ERROR_RESERVED_NAMESPACE_URI:
    case XML_ERROR_UNDECLARING_PREFIX:
        return "O XML usa de forma inválida um nome reservado de namespace.";
    case XML_ERROR_AMPLIFICATION_LIMIT_BREACH:
    case XML_ERROR_RECURSIVE_ENTITY_REF:
        return "O XML define entidades que se multiplicam; o arquivo foi recusado.";
    case XML_ERROR_NO_MEMORY:
        return "Não há memória suficiente para ler o arquivo.";
    default:
        return nullptr;
    }
}

/// What stands at a place where the parser met a character that cannot be there; empty for nothing special.
std::string InvalidTokenText(std::string_view text, std::size_t at) {
    const std::string_view rest = text.substr(std::min(at, text.size()));
    const auto byte = rest.empty() ? '\0' : rest.front();
    if (!rest.empty() && static_cast<unsigned char>(byte) < 0x20 && !IsXmlSpace(byte))
        return fmt::format(
            "Há um caractere de controle invisível (U+{:04X}), que o XML não permite. Apague-o.",
            static_cast<unsigned>(byte));
    for (const std::string_view none : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"})
        if (rest.starts_with(none))
            return fmt::format("Há um caractere invisível (U+FFF{}), que o XML não permite. Apague-o.",
                               none.back() == '\xBE' ? 'E' : 'F');
    // The parser stops behind the two hyphens.
    const std::size_t comment = text.rfind("<!--", at);
    if (comment != std::string_view::npos && at >= comment + 6 && text.substr(at - 2, 2) == "--" &&
        std::min(text.find("-->", comment + 4), text.size()) + 2 >= at)
        return "Um comentário (<!-- ... -->) não pode conter \"--\". Apague os hifens ou troque-os por outro "
               "sinal.";
    return {};
}

} // namespace

/// Turns the parser's events into nodes.
class TXmlTreeBuilder : private TXmlTreeMaker {
  public:
    TXmlTreeBuilder(std::shared_ptr<const std::string> text, TXmlDoctype doctype)
        : TXmlTreeMaker(std::move(text)), text_(document_->Text()), parser_(XML_ParserCreate("UTF-8")),
          doctype_(doctype) {
        XML_SetUserData(parser_, this);
        XML_SetElementHandler(parser_, &TXmlTreeBuilder::OnStart, &TXmlTreeBuilder::OnEnd);
        XML_SetCharacterDataHandler(parser_, &TXmlTreeBuilder::OnText);
        XML_SetCdataSectionHandler(parser_, &TXmlTreeBuilder::OnStartCData, &TXmlTreeBuilder::OnEndCData);
        XML_SetCommentHandler(parser_, &TXmlTreeBuilder::OnComment);
        XML_SetProcessingInstructionHandler(parser_, &TXmlTreeBuilder::OnInstruction);
        XML_SetXmlDeclHandler(parser_, &TXmlTreeBuilder::OnDeclaration);
        XML_SetStartDoctypeDeclHandler(parser_, &TXmlTreeBuilder::OnDoctype);
    }
    ~TXmlTreeBuilder() { XML_ParserFree(parser_); }
    TXmlTreeBuilder(const TXmlTreeBuilder&) = delete;
    TXmlTreeBuilder& operator=(const TXmlTreeBuilder&) = delete;

    TXmlParseResult Build() {
        if (XML_Parse(parser_, text_.data(), static_cast<int>(text_.size()), XML_TRUE) == XML_STATUS_OK) {
            if (std::shared_ptr<const TXmlMessage> fault = NamespaceFault())
                return {nullptr, {std::move(fault)}};
            return {document_, {}};
        }
        if (XML_GetErrorCode(parser_) == XML_ERROR_ABORTED)
            return Failure(abortReason_, abortOffset_);
        return Failure(ReasonOf(XML_GetErrorCode(parser_)), ErrorOffset());
    }

  private:
    /// A run of text: a stretch of the parsed text where that is possible, else gathered in `joined_`.
    struct TRun {
        std::size_t Start = 0; ///< offset of the first byte
        const char* Data = nullptr;
        std::size_t Length = 0;
    };

    static TXmlTreeBuilder& Self(void* data) { return *static_cast<TXmlTreeBuilder*>(data); }

    std::string ReasonOf(XML_Error error) const {
        const TXmlNode& open = *open_.back().Node;
        if (error == XML_ERROR_TAG_MISMATCH)
            return fmt::format("A tag de fechamento não corresponde à tag <{}>, aberta na linha {}.",
                               CutText(open.QualifiedName()), open.Line());
        if (error == XML_ERROR_NO_ELEMENTS && open_.size() > 1)
            return fmt::format(
                "O XML termina sem fechar a tag <{}>, aberta na linha {}; o arquivo pode estar "
                "incompleto.",
                CutText(open.QualifiedName()), open.Line());
        if (ErrorOffset() < kDeclaration.size() + 1 && !text_.starts_with(kDeclaration) &&
            SameButForCase(text_.substr(0, kDeclaration.size()), kDeclaration))
            return "A declaração XML deve começar com <?xml em letras minúsculas.";
        if (error == XML_ERROR_INVALID_TOKEN)
            if (std::string special = InvalidTokenText(text_, ErrorOffset()); !special.empty())
                return special;
        if (error == XML_ERROR_MISPLACED_XML_PI && TrimXmlSpace(text_.substr(0, ErrorOffset())).empty())
            return "Há espaço ou linha em branco antes da declaração XML (<?xml ...?>). Apague o que vem "
                   "antes "
                   "dela: ela deve ser o início do arquivo.";
        const char* known = ErrorText(error);
        return known != nullptr ? std::string(known)
                                : fmt::format("O XML está malformado ({}).", XML_ErrorString(error));
    }

    std::size_t ErrorOffset() const {
        const XML_Index index = XML_GetCurrentByteIndex(parser_);
        return std::min(index < 0 ? 0 : static_cast<std::size_t>(index), text_.size());
    }

    TXmlParseResult Failure(std::string reason, std::size_t offset) const {
        const TXmlPlace place = TPositionCounter(text_).PlaceOf(offset);
        std::string_view source =
            text_.substr(offset, std::min<std::size_t>(text_.find_first_of("\r\n", offset) - offset, 80));
        while (!source.empty() && (static_cast<unsigned char>(source.back()) & 0x80U) != 0)
            source.remove_suffix(1); // never half a character
        return {nullptr,
                {TXmlMessage::CreateError(std::move(reason), std::string(source), place.Line, place.LinePos,
                                          place.FilePos)}};
    }

    void Abort(std::string reason, std::size_t offset) {
        abortReason_ = std::move(reason);
        abortOffset_ = offset;
        XML_StopParser(parser_, XML_FALSE);
    }

    std::size_t EventStart() const { return static_cast<std::size_t>(XML_GetCurrentByteIndex(parser_)); }
    std::size_t EventEnd() const {
        return EventStart() + static_cast<std::size_t>(XML_GetCurrentByteCount(parser_));
    }

    TXmlNode* Append(TXmlNodeKind kind, std::size_t start, std::size_t end) {
        return TXmlTreeMaker::Append(kind, static_cast<std::uint32_t>(start),
                                     static_cast<std::uint32_t>(end));
    }

    std::string_view KeepRun() {
        return run_.Data == joined_.data() ? document_->arena_.Copy(joined_)
                                           : std::string_view(run_.Data, run_.Length);
    }

    /// Ends a run of text that stands before another node. White space is layout there, unless it may belong
    /// to a text that comments, instructions or CDATA sections interrupt.
    void FlushRun(std::size_t end, bool keepSpace) {
        if (run_.Length == 0)
            return;
        if (keepSpace || !TrimXmlSpace({run_.Data, run_.Length}).empty())
            SetContent(Append(TXmlNodeKind::xnText, run_.Start, end), KeepRun());
        run_ = {};
    }

    static void XMLCALL OnStart(void* data, const XML_Char* name, const XML_Char** attributes) {
        TXmlTreeBuilder& self = Self(data);
        const std::size_t start = self.EventStart();
        self.FlushRun(start, self.AfterInterruption());
        TXmlNode* node = self.Append(TXmlNodeKind::xnTag, start, self.EventEnd());
        node->name_ = self.document_->InternName(name);
        if (*attributes != nullptr)
            self.NoteSpecial(node);
        TXmlAttribute** link = nullptr;
        for (std::int32_t index = 0; *attributes != nullptr; attributes += 2, ++index) {
            auto* attribute = self.document_->arena_.New<TXmlAttribute>();
            attribute->name_ = self.document_->InternName(attributes[0]);
            attribute->value_ = self.document_->arena_.Copy(attributes[1]);
            attribute->sourceIndex_ = index;
            *(link != nullptr ? link : node->AttributesOf(self.document_->arena_)) = attribute;
            link = &attribute->next_;
        }
        self.open_.push_back({node, nullptr});
    }

    static void XMLCALL OnEnd(void* data, const XML_Char*) {
        TXmlTreeBuilder& self = Self(data);
        TXmlNode* node = self.open_.back().Node;
        if (node->firstChild_ == nullptr) {
            if (self.run_.Length != 0)
                SetContent(node, self.KeepRun());
            self.run_ = {};
        } else {
            self.FlushRun(self.EventStart(), self.AfterInterruption());
            self.JoinPieces(node);
        }
        node->byteEnd_ = static_cast<std::uint32_t>(self.EventEnd());
        self.open_.pop_back();
    }

    static void XMLCALL OnText(void* data, const XML_Char* text, int length) {
        TXmlTreeBuilder& self = Self(data);
        const auto size = static_cast<std::size_t>(length);
        const std::size_t start = self.EventStart();
        const char* const first = self.text_.data();
        // A piece that the text itself holds is pointed at; a line end is handed over as a lone "\n", which
        // the text holds too unless it is written as CR.
        const bool inText = (text >= first && text < first + self.text_.size());
        const char* piece = text;
        bool pointable = inText;
        if (!inText && size == 1 && start < self.text_.size() && self.text_[start] == *text) {
            piece = first + start;
            pointable = true;
        }
        TRun& run = self.run_;
        if (run.Length == 0) {
            run.Start = start;
            if (pointable) {
                run.Data = piece;
                run.Length = size;
                return;
            }
            self.joined_.assign(text, size);
        } else if (pointable && run.Data + run.Length == piece) {
            run.Length += size;
            return;
        } else {
            if (run.Data != self.joined_.data())
                self.joined_.assign(run.Data, run.Length);
            self.joined_.append(text, size);
        }
        run.Data = self.joined_.data();
        run.Length = self.joined_.size();
    }

    static void XMLCALL OnStartCData(void* data) {
        TXmlTreeBuilder& self = Self(data);
        self.FlushRun(self.EventStart(), true);
        self.cdataStart_ = self.EventStart();
    }

    static void XMLCALL OnEndCData(void* data) {
        TXmlTreeBuilder& self = Self(data);
        const std::size_t end = self.EventEnd();
        TXmlNode* node = self.Append(TXmlNodeKind::xnCData, self.cdataStart_, end);
        if (self.run_.Length != 0)
            SetContent(node, self.KeepRun());
        self.run_ = {};
    }

    static void XMLCALL OnComment(void* data, const XML_Char* content) {
        TXmlTreeBuilder& self = Self(data);
        self.FlushRun(self.EventStart(), true);
        SetContent(self.Append(TXmlNodeKind::xnComment, self.EventStart(), self.EventEnd()),
                   self.document_->arena_.Copy(content));
    }

    static void XMLCALL OnInstruction(void* data, const XML_Char* target, const XML_Char* content) {
        TXmlTreeBuilder& self = Self(data);
        self.FlushRun(self.EventStart(), true);
        TXmlNode* node = self.Append(TXmlNodeKind::xnInstruction, self.EventStart(), self.EventEnd());
        node->name_ = self.document_->InternName(target);
        self.NoteSpecial(node);
        SetContent(node, self.document_->arena_.Copy(content));
    }

    static void XMLCALL OnDeclaration(void* data, const XML_Char* version, const XML_Char*, int) {
        if (version == nullptr) // a text declaration of an external entity
            return;
        TXmlTreeBuilder& self = Self(data);
        self.Append(TXmlNodeKind::xnDeclaration, self.EventStart(), self.EventEnd());
        const std::string_view number(version);
        if (number != "1.0" && number != "1.1")
            self.Abort(
                fmt::format("O arquivo declara a versão {} do XML, que outros leitores recusam. Declare "
                            "version=\"1.0\".",
                            QuoteText(number)),
                self.EventStart());
    }

    static void XMLCALL OnDoctype(void* data, const XML_Char*, const XML_Char*, const XML_Char*, int) {
        TXmlTreeBuilder& self = Self(data);
        if (self.doctype_ == TXmlDoctype::Refused)
            self.Abort("O arquivo contém uma declaração DOCTYPE, que o padrão TISS não usa e que não é "
                       "aceita. Remova a declaração <!DOCTYPE ...>.",
                       self.text_.rfind("<!DOCTYPE", self.EventStart()));
    }

    std::string_view text_;
    XML_Parser parser_;
    TXmlDoctype doctype_;
    TRun run_;
    std::string joined_;
    std::size_t cdataStart_ = 0;
    std::string abortReason_;
    std::size_t abortOffset_ = 0; ///< of what the reason speaks of
};

TXmlParseResult TXmlParser::Parse(std::shared_ptr<const std::string> text, TXmlDoctype doctype) {
    if (text->size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        return {nullptr, {TXmlMessage::CreateError("O arquivo tem mais de 2 GB e não pode ser lido.")}};
    if (std::shared_ptr<TXmlDocument> document = ReadPlainXml(text))
        return {std::move(document), {}};
    return ParseByJudge(std::move(text), doctype);
}

TXmlParseResult TXmlParser::ParseByJudge(std::shared_ptr<const std::string> text, TXmlDoctype doctype) {
    TXmlTreeBuilder builder(std::move(text), doctype);
    return builder.Build();
}

TXmlParseResult TXmlParser::Parse(std::string text, TXmlDoctype doctype) {
    return Parse(std::make_shared<const std::string>(std::move(text)), doctype);
}

} // namespace conferix
