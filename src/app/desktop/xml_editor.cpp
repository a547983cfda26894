#include "app/desktop/xml_editor.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/editor_accessible.h"
#include "app/desktop/patience.h"
#include "app/desktop/ready_memory.h"
#include "app/desktop/theme.h"
#include "app/line_layout.h"
#include "app/text_changes.h"
#include "app/xml_tags.h"

#include <QAccessible>
#include <QEvent>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QTimer>
#include <QToolTip>

#include <Qsci/qscilexerxml.h>

#include <algorithm>
#include <array>
#include <utility>

namespace conferix {

namespace {

constexpr int kNumbers = 0;
constexpr int kSymbols = 1;
constexpr int kFolds = 2;
constexpr int kTagIndicator = 4; ///< those before it mark messages, by severity
/// Bytes handed to the editor at a time while a text is loaded.
constexpr std::size_t kPiece = 2U << 20U;
/// Bytes of room beside a text at the least.
constexpr std::size_t kSpare = 4096;
/// Bytes that are searched at a time.
constexpr long kSearched = 1 << 20;
/// Bytes on either side of the caret in which the tag is looked for that belongs to the one at the caret.
constexpr long kTagReach = 200'000;
constexpr long kMarkReach = 2'000;

/// 0: what makes a file invalid, 1: warnings, 2: the rest.
std::size_t MarkOf(TMessageType type) {
    if (type == TMessageType::mtError || type == TMessageType::mtFatal)
        return 0;
    return type == TMessageType::mtWarning ? 1 : 2;
}

/// A change of more bytes is not read aloud, nor are more changes of one step.
constexpr long kReadAloud = 20'000;
constexpr int kReadAloudOfStep = 20;

constexpr std::array kMarkTypes = {TMessageType::mtError, TMessageType::mtWarning,
                                   TMessageType::mtInformation};

/// Bytes of room for a text, so that what is typed needs no more soon.
std::size_t RoomOf(std::size_t text) {
    return text + text / 16 + kSpare;
}

/// The editing component keeps a byte of style for each byte of text.
TReadyMemory MemoryFor(std::size_t room) {
    return {2, room};
}

/// Bytes of a text at the most while it is changed by edits, from the last to the first.
std::size_t LargestOnTheWay(std::size_t text, const std::vector<TTextEdit>& edits) {
    std::size_t largest = text;
    for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
        text = text - (edit->End - edit->Start) + edit->Text.size();
        largest = std::max(largest, text);
    }
    return largest;
}

} // namespace

long TXmlEditor::Send(unsigned message, long first, long second) const {
    return SendScintilla(message, static_cast<unsigned long>(first), second);
}

long TXmlEditor::SendText(unsigned message, std::string_view text) const {
    return SendScintilla(message, static_cast<uintptr_t>(text.size()), text.data());
}

TXmlEditor::TXmlEditor(QWidget* parent)
    : QsciScintilla(parent), loadTimer_(new QTimer(this)), markTimer_(new QTimer(this)) {
    static const bool kServed = (ServeScreenReaders(), true);
    Q_UNUSED(kServed)
    setAccessibleName(QStringLiteral("Texto do arquivo"));
    setAcceptDrops(false); // files that are dropped are for the window to open
    viewport()->setAcceptDrops(false);
    setUtf8(true);
    setEolMode(EolUnix);
    setIndentationsUseTabs(false);
    setTabWidth(2);
    setFolding(PlainFoldStyle, kFolds);
    setCaretLineVisible(true);
    setMarginLineNumbers(kNumbers, true);
    setMarginType(kSymbols, SymbolMargin);
    setMarginSensitivity(kSymbols, false);
    setMarginMarkerMask(kSymbols, 0); // what stands in it is drawn by DrawMarks
    Send(SCI_SETIDLESTYLING, static_cast<long>(SC_IDLESTYLING_ALL));
    Send(SCI_SETLAYOUTCACHE, static_cast<long>(SC_CACHE_PAGE));
    Send(SCI_SETSCROLLWIDTH, 1);
    Send(SCI_SETSCROLLWIDTHTRACKING, 1);
    Send(SCI_SETMOUSEDWELLTIME, 400);
    indicatorDefine(SquiggleIndicator, 0);
    indicatorDefine(DashesIndicator, 1);
    indicatorDefine(DotsIndicator, 2);
    indicatorDefine(StraightBoxIndicator, kTagIndicator);
    Send(SCI_INDICSETALPHA, kTagIndicator, 50);
    Send(SCI_INDICSETOUTLINEALPHA, kTagIndicator, 160);
    Send(SCI_INDICSETUNDER, kTagIndicator, 1);
    ApplyTheme();

    loadTimer_->setSingleShot(true);
    markTimer_->setSingleShot(true);
    connect(loadTimer_, &QTimer::timeout, this, &TXmlEditor::LoadMore);
    connect(markTimer_, &QTimer::timeout, this, &TXmlEditor::PlaceMarks);
    connect(this, &QsciScintillaBase::SCN_MODIFIED, this,
            [this](int position, int kind, const char*, int length) {
                if ((kind & (SC_MOD_BEFOREINSERT | SC_MOD_BEFOREDELETE)) != 0)
                    OnChange(position, length, (kind & SC_MOD_BEFOREINSERT) != 0);
            });
    connect(this, &QsciScintillaBase::SCN_SAVEPOINTREACHED, this, &TXmlEditor::BackAtSaved);
    connect(this, &QsciScintillaBase::SCN_UPDATEUI, this, &TXmlEditor::OnUpdated);
    connect(this, &QsciScintillaBase::SCN_DWELLSTART, this, &TXmlEditor::ShowTip);
    connect(this, &QsciScintillaBase::SCN_DWELLEND, this, [] { QToolTip::hideText(); });
}

void TXmlEditor::ApplyTheme() {
    const TThemeColors colors = ColorsOf(palette());
    const QColor ground = palette().color(QPalette::Base);
    const QColor text = palette().color(QPalette::Text);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(std::max(font.pointSizeF(), QFont().pointSizeF()));
    setFont(font);
    setColor(text);
    setPaper(ground);
    Send(SCI_STYLECLEARALL);
    if (QsciLexer* lexer = this->lexer()) {
        lexer->setDefaultFont(font);
        lexer->setDefaultPaper(ground);
        lexer->setDefaultColor(text);
        for (int style = 0; style < 128; ++style) {
            lexer->setFont(font, style);
            lexer->setPaper(ground, style);
            lexer->setColor(text, style);
        }
        const auto color = [&](const QColor& with, std::initializer_list<int> styles) {
            for (const int style : styles)
                lexer->setColor(with, style);
        };
        color(colors.Tag, {QsciLexerXML::Tag, QsciLexerXML::UnknownTag, QsciLexerXML::XMLTagEnd,
                           QsciLexerXML::XMLStart, QsciLexerXML::XMLEnd});
        color(colors.Attribute, {QsciLexerXML::Attribute, QsciLexerXML::UnknownAttribute});
        color(colors.Value, {QsciLexerXML::HTMLDoubleQuotedString, QsciLexerXML::HTMLSingleQuotedString,
                             QsciLexerXML::HTMLValue, QsciLexerXML::HTMLNumber, QsciLexerXML::OtherInTag});
        color(colors.Comment, {QsciLexerXML::HTMLComment});
        color(colors.Entity, {QsciLexerXML::Entity, QsciLexerXML::CDATA});
    }
    markIcons_.clear();
    setCaretForegroundColor(text);
    setCaretLineBackgroundColor(colors.CurrentLine);
    setSelectionBackgroundColor(palette().color(QPalette::Highlight));
    setSelectionForegroundColor(palette().color(QPalette::HighlightedText));
    setMarginsFont(font);
    setMarginsBackgroundColor(colors.Margin);
    setMarginsForegroundColor(colors.MarginText);
    setFoldMarginColors(colors.Margin, colors.Margin);
    for (std::size_t mark = 0; mark < kMarkTypes.size(); ++mark)
        setIndicatorForegroundColor(SeverityColor(kMarkTypes[mark], palette()), static_cast<int>(mark));
    Send(SCI_INDICSETFORE, kTagIndicator,
         colors.MatchingTag.red() | colors.MatchingTag.green() << 8 | colors.MatchingTag.blue() << 16);
    setMarginWidth(kSymbols, QFontMetrics(font).height() + 4);
}

void TXmlEditor::changeEvent(QEvent* event) {
    QsciScintilla::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        ApplyTheme();
}

void TXmlEditor::IgnoreEnter(int duration) {
    enterIgnored_ = QDeadlineTimer(duration);
}

void TXmlEditor::keyPressEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && !enterIgnored_.hasExpired())
        return;
    QsciScintilla::keyPressEvent(event);
}

void TXmlEditor::paintEvent(QPaintEvent* event) {
    QsciScintilla::paintEvent(event);
    DrawMarks();
}

void TXmlEditor::DrawMarks() {
    // The editing component would draw images without regard for the screen's resolution.
    QPainter painter(viewport());
    const int left = MarginEnd(kNumbers);
    const int width = MarginEnd(kSymbols) - left;
    const auto height = static_cast<int>(Send(SCI_TEXTHEIGHT, 0));
    const int size = std::min(width, height) - 2;
    const long top = Send(SCI_GETFIRSTVISIBLELINE);
    const long onScreen = Send(SCI_LINESONSCREEN) + 1;
    for (int row = 0; row < onScreen; ++row) {
        const int line = static_cast<int>(Send(SCI_DOCLINEFROMVISIBLE, top + row)) + 1;
        const auto [first, last] = places_.OnLines(line, line);
        if (first == last || top + row != Send(SCI_VISIBLEFROMDOCLINE, line - 1))
            continue;
        std::size_t mark = kMarkTypes.size(); // of several in a line the gravest
        for (std::size_t i = first; i < last && mark != 0; ++i)
            mark = std::min(mark, MarkOf(places_.All()[i].Type));
        painter.drawPixmap(left + (width - size) / 2, row * height + (height - size) / 2,
                           MarkIcon(mark, size));
    }
}

const QPixmap& TXmlEditor::MarkIcon(std::size_t mark, int size) {
    if (const QSize wanted = QSize(size, size) * devicePixelRatioF();
        markIcons_.empty() || markIcons_.front().size() != wanted) {
        markIcons_.clear();
        for (const TMessageType type : kMarkTypes) // shapes tell them apart, colours come on top
            markIcons_.push_back(SeverityIcon(type).pixmap(QSize(size, size), devicePixelRatioF()));
    }
    return markIcons_[mark];
}

int TXmlEditor::MarginEnd(int margin) const {
    long end = 0;
    for (int i = 0; i <= margin; ++i)
        end += Send(SCI_GETMARGINWIDTHN, i);
    return static_cast<int>(end);
}

struct TXmlEditor::TPreparedText {
    std::ptrdiff_t LineEnds = 0;
    bool OfWindows = false; ///< the line ends
    TReadyMemory Memory;
};

void TXmlEditor::Load(TXmlPtr text, bool highlighted) {
    SetPlaces({}, {});
    Send(SCI_SETREADONLY, 0);
    Send(SCI_SETUNDOCOLLECTION, 0);
    Send(SCI_SETMODEVENTMASK, static_cast<long>(SC_MOD_CHANGEFOLD));
    Send(SCI_CLEARALL);
    if (highlighted != (lexer() != nullptr)) {
        setLexer(highlighted ? new QsciLexerXML(this) : nullptr);
        ApplyTheme();
    }
    loadTimer_->stop();
    loading_ = std::move(text);
    loaded_ = 0;
    Send(SCI_SETREADONLY, 1);
    ++loads_;
    if (loading_->size() < TReadyMemory::Least)
        return BeginLoading(Prepare(*loading_));
    RunBeside(
        this, [text = loading_] { return Prepare(*text); },
        [this, load = loads_](auto outcome) {
            if (load == loads_)
                BeginLoading(outcome.Take());
        });
}

TXmlEditor::TPreparedText TXmlEditor::Prepare(const std::string& text) {
    return {std::count(text.begin(), text.end(), '\n'), text.find("\r\n") != std::string::npos,
            MemoryFor(RoomOf(text.size()))};
}

void TXmlEditor::BeginLoading(const TPreparedText& prepared) {
    setEolMode(prepared.OfWindows ? EolWindows : EolUnix);
    room_ = RoomOf(loading_->size());
    Send(SCI_SETREADONLY, 0);
    Send(SCI_ALLOCATE, static_cast<long>(room_));
    if (QAccessible::isActive())
        CountCharacters(*this); // as they come, not all at once at the first move of the caret
    setMarginWidth(kNumbers, QString(3 + QString::number(prepared.LineEnds).size(), QLatin1Char('9')));
    LoadMore();
}

void TXmlEditor::LoadMore() {
    const std::size_t size = std::min(kPiece, loading_->size() - loaded_);
    Send(SCI_SETREADONLY, 0);
    SendText(SCI_APPENDTEXT, {loading_->data() + loaded_, size});
    loaded_ += size;
    if (loaded_ < loading_->size()) {
        Send(SCI_SETREADONLY, 1);
        loadTimer_->start(0);
        return;
    }
    // Told of a change after it, QScintilla would count all characters before it.
    Send(SCI_SETMODEVENTMASK,
         static_cast<long>(SC_MOD_CHANGEFOLD | SC_MOD_BEFOREINSERT | SC_MOD_BEFOREDELETE));
    Send(SCI_SETUNDOCOLLECTION, 1);
    Send(SCI_EMPTYUNDOBUFFER);
    Send(SCI_SETSAVEPOINT);
    snapshot_ = std::move(loading_);
    loading_ = nullptr;
    SetEditable(editable_);
    emit Loaded();
}

void TXmlEditor::SetEditable(bool editable) {
    editable_ = editable;
    Send(SCI_SETREADONLY, editable && !IsLoading() ? 0 : 1);
}

TXmlEditor::TXmlPtr TXmlEditor::Snapshot() const {
    if (IsLoading())
        return loading_;
    if (snapshot_ == nullptr) {
        // The editor holds the text in two parts, with a gap between them that need not be closed.
        const long length = Send(SCI_GETLENGTH);
        const long gap = Send(SCI_GETGAPPOSITION);
        auto text = std::make_shared<std::string>();
        text->reserve(static_cast<std::size_t>(length));
        for (const auto& [start, end] : {std::pair(0L, gap), std::pair(gap, length)})
            if (start < end)
                text->append(reinterpret_cast<const char*>(Send(SCI_GETRANGEPOINTER, start, end - start)),
                             static_cast<std::size_t>(end - start));
        snapshot_ = std::move(text);
    }
    return snapshot_;
}

void TXmlEditor::ReplaceBy(const TXmlPtr& text, TPatience& patience) {
    struct TPreparedEdits {
        std::vector<TTextEdit> Edits;
        std::size_t Room;
        TReadyMemory Memory;
    };
    const auto [edits, room, memory] = patience.Await([before = Snapshot(), &text, had = room_] {
        auto found = FindEdits(*before, *text);
        const std::size_t largest = LargestOnTheWay(before->size(), found);
        if (largest < had)
            return TPreparedEdits{std::move(found), had, {}};
        return TPreparedEdits{std::move(found), RoomOf(largest), MemoryFor(RoomOf(largest))};
    });
    if (edits.empty())
        return;
    Send(SCI_SETREADONLY, 0);
    room_ = room;
    Send(SCI_ALLOCATE, static_cast<long>(room_));
    Send(SCI_BEGINUNDOACTION);
    const QScopedValueRollback<std::optional<int>> step(changesOfStep_, 0);
    for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
        const auto start = static_cast<long>(edit->Start);
        auto end = static_cast<long>(edit->End);
        for (; end - start > static_cast<long>(kPiece); end -= static_cast<long>(kPiece), patience.Go())
            Send(SCI_DELETERANGE, end - static_cast<long>(kPiece), static_cast<long>(kPiece));
        Send(SCI_SETTARGETRANGE, start, end);
        SendText(SCI_REPLACETARGET, edit->Text.substr(0, kPiece));
        for (std::size_t at = kPiece; at < edit->Text.size(); at += kPiece, patience.Go()) {
            const auto place = start + static_cast<long>(at);
            Send(SCI_SETTARGETRANGE, place, place);
            SendText(SCI_REPLACETARGET, edit->Text.substr(at, kPiece));
        }
        patience.Go();
    }
    Send(SCI_ENDUNDOACTION);
    SetEditable(editable_);
    snapshot_ = text;
}

void TXmlEditor::NoteSaved() {
    Send(SCI_SETSAVEPOINT);
}

void TXmlEditor::Undo(const TGoOn& goOn) {
    goOn_ = goOn;
    const QScopedValueRollback<std::optional<int>> step(changesOfStep_, 0);
    Send(SCI_UNDO);
    goOn_ = nullptr;
}

void TXmlEditor::Redo(const TGoOn& goOn) {
    goOn_ = goOn;
    const QScopedValueRollback<std::optional<int>> step(changesOfStep_, 0);
    Send(SCI_REDO);
    goOn_ = nullptr;
}

bool TXmlEditor::IsReadAloud(long length) const {
    return length <= kReadAloud && changesOfStep_.value_or(0) <= kReadAloudOfStep && QAccessible::isActive();
}

void TXmlEditor::OnChange(long position, long length, bool inserted) {
    SettleChange();
    snapshot_ = nullptr;
    changing_ = {position, inserted ? length : 0, static_cast<int>(Send(SCI_LINEFROMPOSITION, position)),
                 LineCount()};
    if (changesOfStep_)
        ++*changesOfStep_;
    if (!inserted && IsReadAloud(length))
        TellTextRemoved(*this, position, ToQt(TextOf(position, position + length)));
    markTimer_->start(0);
    emit Edited();
    if (goOn_)
        goOn_();
}

void TXmlEditor::SettleChange() {
    const auto change = std::exchange(changing_, std::nullopt);
    if (!change)
        return;
    if (change->Inserted != 0 && IsReadAloud(change->Inserted))
        TellTextInserted(*this, change->Position,
                         ToQt(TextOf(change->Position, change->Position + change->Inserted)));
    if (const int linesAdded = LineCount() - change->LineCount; linesAdded != 0)
        places_.LinesChanged(change->Line + 1, linesAdded);
}

const TMessagePlaces& TXmlEditor::Places() {
    SettleChange();
    return places_;
}

void TXmlEditor::OnUpdated(int what) {
    if ((what & (SC_UPDATE_V_SCROLL | SC_UPDATE_SELECTION | SC_UPDATE_CONTENT)) == 0)
        return;
    if ((what & SC_UPDATE_V_SCROLL) != 0)
        markTimer_->start(0);
    if ((what & SC_UPDATE_SELECTION) != 0) {
        MarkMatchingTags();
        if (QAccessible::isActive())
            TellCaretMoved(*this);
        emit Moved();
    }
}

void TXmlEditor::SetPlaces(const TXmlMessages& messages, std::function<QString(std::size_t)> textOf) {
    changing_.reset();
    places_ = TMessagePlaces(messages);
    textOf_ = std::move(textOf);
    markTimer_->start(0);
}

void TXmlEditor::PlaceMarks() {
    SettleChange();
    const long length = Send(SCI_GETLENGTH);
    for (std::size_t mark = 0; mark < kMarkTypes.size(); ++mark) {
        Send(SCI_SETINDICATORCURRENT, static_cast<long>(mark));
        Send(SCI_INDICATORCLEARRANGE, 0, length);
    }
    const long top = Send(SCI_GETFIRSTVISIBLELINE);
    const long bottom = top + Send(SCI_LINESONSCREEN) + 1;
    const auto [first, last] = places_.OnLines(static_cast<int>(Send(SCI_DOCLINEFROMVISIBLE, top)) + 1,
                                               static_cast<int>(Send(SCI_DOCLINEFROMVISIBLE, bottom)) + 1);
    constexpr std::size_t kMostOnScreen = 2'000; // a line may hold any number of them
    for (std::size_t i = first; i < std::min(last, first + kMostOnScreen); ++i) {
        const TMessagePlace& place = places_.All()[i];
        const auto mark = static_cast<long>(MarkOf(place.Type));
        const long position = PositionOf(place.Line, place.LinePos);
        const auto [text, start] = Around(position, kMarkReach);
        const TTextRange range = MarkedRange(text, static_cast<std::size_t>(position - start));
        Send(SCI_SETINDICATORCURRENT, mark);
        Send(SCI_INDICATORFILLRANGE, start + static_cast<long>(range.Start),
             static_cast<long>(range.End - range.Start));
    }
    viewport()->update(0, 0, MarginEnd(kSymbols), viewport()->height());
}

void TXmlEditor::MarkMatchingTags() {
    Send(SCI_SETINDICATORCURRENT, kTagIndicator);
    Send(SCI_INDICATORCLEARRANGE, 0, Send(SCI_GETLENGTH));
    const long caret = Send(SCI_GETCURRENTPOS);
    const auto [text, start] = Around(caret, kTagReach);
    const auto tags = MatchTags(text, static_cast<std::size_t>(caret - start));
    if (!tags)
        return;
    for (const TTextRange& range : {tags->first, tags->second})
        Send(SCI_INDICATORFILLRANGE, start + static_cast<long>(range.Start),
             static_cast<long>(range.End - range.Start));
}

bool TXmlEditor::GoToMatchingTag() {
    const long caret = Send(SCI_GETCURRENTPOS);
    const auto [text, start] = Around(caret, Send(SCI_GETLENGTH));
    const auto tags = MatchTags(text, static_cast<std::size_t>(caret - start));
    if (!tags)
        return false;
    const long place = start + static_cast<long>(tags->second.Start);
    SelectRange(place, place);
    return true;
}

void TXmlEditor::ShowTip(int position, int x, int y) {
    if (!textOf_)
        return;
    if (position < 0) // over the margin
        position = static_cast<int>(Send(SCI_POSITIONFROMPOINT, x, y));
    const int line = static_cast<int>(Send(SCI_LINEFROMPOSITION, position)) + 1;
    const auto [first, last] = places_.OnLines(line, line);
    constexpr std::size_t kMostInTip = 5;
    QStringList texts;
    for (std::size_t i = first; i < std::min(last, first + kMostInTip); ++i)
        texts << textOf_(places_.All()[i].Message);
    if (last - first > kMostInTip)
        texts << QStringLiteral("e mais %1 nesta linha").arg(last - first - kMostInTip);
    if (!texts.isEmpty())
        QToolTip::showText(viewport()->mapToGlobal(QPoint(x, y)), texts.join(QStringLiteral("\n\n")),
                           viewport());
}

long TXmlEditor::PositionOf(int line, int linePos) const {
    const long start = Send(SCI_POSITIONFROMLINE, line - 1);
    const long end = Send(SCI_GETLINEENDPOSITION, line - 1);
    if (start < 0)
        return Send(SCI_GETLENGTH);
    const long position = Send(SCI_POSITIONRELATIVE, start, std::max(linePos - 1, 0));
    return position < start || position > end ? end : position;
}

std::string TXmlEditor::TextOf(long start, long end) const {
    std::string text(static_cast<std::size_t>(end - start), '\0');
    SendScintilla(SCI_GETTEXTRANGE, start, end, text.data());
    return text;
}

std::pair<std::string, long> TXmlEditor::Around(long position, long reach) const {
    const long start = std::max(0L, position - reach);
    return {TextOf(start, std::min(Send(SCI_GETLENGTH), position + reach)), start};
}

void TXmlEditor::SelectRange(long start, long end) {
    const long line = Send(SCI_LINEFROMPOSITION, end);
    Send(SCI_ENSUREVISIBLEENFORCEPOLICY, line);
    Send(SCI_SETSEL, start, end);
    const long visible = Send(SCI_VISIBLEFROMDOCLINE, line);
    const long screen = Send(SCI_LINESONSCREEN);
    const long top = Send(SCI_GETFIRSTVISIBLELINE);
    if (visible < top + 2 || visible > top + screen - 3)
        Send(SCI_SETFIRSTVISIBLELINE, std::max(0L, visible - screen / 3));
    Send(SCI_SCROLLCARET);
    Send(SCI_CHOOSECARETX);
}

void TXmlEditor::GoTo(int line, int linePos) {
    const long position = PositionOf(std::clamp(line, 1, LineCount()), linePos);
    SelectRange(position, position);
}

int TXmlEditor::CurrentLine() const {
    return static_cast<int>(Send(SCI_LINEFROMPOSITION, Send(SCI_GETCURRENTPOS))) + 1;
}

int TXmlEditor::CurrentLinePos() const {
    const long caret = Send(SCI_GETCURRENTPOS);
    const long start = Send(SCI_POSITIONFROMLINE, Send(SCI_LINEFROMPOSITION, caret));
    return static_cast<int>(Send(SCI_COUNTCHARACTERS, start, caret)) + 1;
}

int TXmlEditor::LineCount() const {
    return static_cast<int>(Send(SCI_GETLINECOUNT));
}

long TXmlEditor::FindFrom(long start, long end, const TSearch& search, const TGoOn& goOn) const {
    const QByteArray text = search.Text.toUtf8();
    Send(SCI_SETSEARCHFLAGS, static_cast<long>((search.MatchCase ? SCFIND_MATCHCASE : 0) |
                                               (search.WholeWord ? SCFIND_WHOLEWORD : 0)));
    const long step = start <= end ? kSearched : -kSearched;
    // What begins in one part may end in the next; letters of the other case may take more bytes.
    const long beyond = (start <= end ? 4 : -4) * (static_cast<long>(text.size()) + 1);
    const auto before = [&](long left, long right) { return step > 0 ? left < right : left > right; };
    for (long from = start; before(from, end); from += step) {
        const long to = before(from + step + beyond, end) ? from + step + beyond : end;
        Send(SCI_SETTARGETRANGE, from, to);
        const long found =
            SendText(SCI_SEARCHINTARGET, {text.constData(), static_cast<std::size_t>(text.size())});
        if (found >= 0)
            return found;
        if (!goOn())
            break;
    }
    return -1;
}

bool TXmlEditor::Find(const TSearch& search, bool backwards, const TGoOn& goOn) {
    if (search.Text.isEmpty())
        return false;
    bool stopped = false;
    const TGoOn noting = [&] {
        stopped = stopped || !goOn();
        return !stopped;
    };
    const long length = Send(SCI_GETLENGTH);
    const long from = Send(backwards ? SCI_GETSELECTIONSTART : SCI_GETSELECTIONEND);
    long found = FindFrom(from, backwards ? 0 : length, search, noting);
    if (found < 0 && !stopped)
        found = FindFrom(backwards ? length : 0, backwards ? from : length, search, noting);
    if (found < 0)
        return false;
    SelectRange(found, Send(SCI_GETTARGETEND));
    return true;
}

bool TXmlEditor::ReplaceFound(const TSearch& search, const QString& by, const TGoOn& goOn) {
    const long start = Send(SCI_GETSELECTIONSTART);
    const long end = Send(SCI_GETSELECTIONEND);
    if (!search.Text.isEmpty() && start != end && !isReadOnly() &&
        FindFrom(start, end, search, goOn) == start && Send(SCI_GETTARGETEND) == end) {
        const QByteArray with = by.toUtf8();
        SendText(SCI_REPLACETARGET, {with.constData(), static_cast<std::size_t>(with.size())});
        const long after = start + static_cast<long>(with.size());
        SelectRange(after, after);
    }
    return Find(search, false, goOn);
}

int TXmlEditor::ReplaceAll(const TSearch& search, const QString& by, const TGoOn& goOn) {
    const QByteArray with = by.toUtf8();
    if (search.Text.isEmpty() || isReadOnly())
        return 0;
    int count = 0;
    const QScopedValueRollback<std::optional<int>> step(changesOfStep_, 0);
    Send(SCI_BEGINUNDOACTION);
    for (long at = 0; (at = FindFrom(at, Send(SCI_GETLENGTH), search, goOn)) >= 0; ++count) {
        SendText(SCI_REPLACETARGET, {with.constData(), static_cast<std::size_t>(with.size())});
        at += static_cast<long>(with.size());
        if (!goOn()) {
            ++count;
            break;
        }
    }
    Send(SCI_ENDUNDOACTION);
    return count;
}

} // namespace conferix
