#include "app/desktop/message_panel.h"

#include "app/desktop/background.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/theme.h"
#include "app/missing_data.h"
#include "validation/identity.h"
#include "validation/solver.h"

#include <QClipboard>
#include <QComboBox>
#include <QDataStream>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QSplitter>
#include <QTextBrowser>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>

namespace conferix {

namespace {

/// A list of more messages is looked through beside.
constexpr std::size_t kFewMessages = 2'000;
constexpr int kTypingPause = 150;
/// The corrections of one message that get a button; the menu has all.
constexpr std::size_t kMostButtons = 4;

using TShownSeverity = std::pair<const char*, std::vector<TMessageType>>;
const std::array<TShownSeverity, 3>& ShownSeverities() {
    static const std::array<TShownSeverity, 3> kShown = {
        TShownSeverity{"Erros", {TMessageType::mtError, TMessageType::mtFatal}},
        TShownSeverity{"Avisos", {TMessageType::mtWarning}},
        TShownSeverity{"Informações", {TMessageType::mtInformation, TMessageType::mtSuccess}}};
    return kShown;
}

} // namespace

TMessagePanel::TMessagePanel(const QString& name, QWidget* parent)
    : QWidget(parent), model_(new TMessageModel(this)), view_(new QTreeView), nothing_(new QLabel),
      details_(new QTextBrowser), buttons_(new QHBoxLayout), typing_(new QTimer(this)) {
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(4);
    auto* filters = new QHBoxLayout;
    BuildFilters(filters);
    rows->addLayout(filters);

    view_->setObjectName(QStringLiteral("mensagens"));
    view_->setAccessibleName(name);
    view_->setModel(model_);
    view_->setUniformRowHeights(true);
    view_->setAlternatingRowColors(true);
    view_->setAllColumnsShowFocus(true);
    view_->setExpandsOnDoubleClick(false);
    view_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    view_->setContextMenuPolicy(Qt::CustomContextMenu);
    view_->header()->setStretchLastSection(false);
    view_->header()->setSortIndicatorClearable(true);
    view_->header()->setSortIndicator(-1, Qt::AscendingOrder);
    view_->setSortingEnabled(true);
    view_->installEventFilter(this);
    const int unit = fontMetrics().horizontalAdvance(QLatin1Char('0'));
    const std::array<int, kMessageColumns> widths = {18, 9, 14, 8, 26, 80, 10};
    for (std::size_t column = 0; column < kMessageColumns; ++column)
        view_->setColumnWidth(static_cast<int>(column), widths[column] * unit);
    view_->header()->setSectionResizeMode(static_cast<int>(TMessageColumn::Text), QHeaderView::Stretch);

    details_->setObjectName(QStringLiteral("mensagemInteira"));
    details_->setAccessibleName(QStringLiteral("Mensagem selecionada por inteiro"));
    details_->setOpenLinks(false);
    details_->setTabChangesFocus(true);
    nothing_->setAlignment(Qt::AlignCenter);
    nothing_->setWordWrap(true);
    nothing_->hide();

    auto* below = new QWidget;
    auto* belowRows = new QVBoxLayout(below);
    belowRows->setContentsMargins(0, 0, 0, 0);
    belowRows->setSpacing(2);
    belowRows->addWidget(details_);
    belowRows->addLayout(buttons_);
    buttons_->addStretch();
    auto* parts = new QSplitter(Qt::Vertical);
    parts->addWidget(view_);
    parts->addWidget(below);
    parts->setStretchFactor(0, 4);
    parts->setStretchFactor(1, 1);
    parts->setSizes({300, 90});
    parts->setChildrenCollapsible(false);
    rows->addWidget(nothing_);
    rows->addWidget(parts, 1);

    typing_->setSingleShot(true);
    typing_->setInterval(kTypingPause);
    connect(typing_, &QTimer::timeout, this, &TMessagePanel::ApplyFilter);
    connect(view_, &QWidget::customContextMenuRequested, this, &TMessagePanel::ShowMenu);
    connect(view_, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
        if (const auto message = model_->MessageAt(index))
            emit Activated(*message);
    });
    connect(view_->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] {
        ShowDetails();
        if (const auto message = Current())
            emit Selected(*message);
    });
    UpdateCounts();
}

void TMessagePanel::BuildFilters(QHBoxLayout* row) {
    constexpr std::array kIcons = {TMessageType::mtError, TMessageType::mtWarning,
                                   TMessageType::mtInformation};
    for (std::size_t i = 0; i < severities_.size(); ++i) {
        auto* button = new QToolButton;
        button->setObjectName(QStringLiteral("filtro") + QString::fromUtf8(ShownSeverities()[i].first));
        button->setCheckable(true);
        button->setChecked(true);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setIcon(SeverityIcon(kIcons[i]));
        button->setToolTip(QStringLiteral("Mostrar ou esconder: ") +
                           QString::fromUtf8(ShownSeverities()[i].first).toLower());
        connect(button, &QToolButton::toggled, this, &TMessagePanel::ApplyFilter);
        row->addWidget(button);
        severities_[i] = button;
    }
    const auto combo = [&](const char* name, const char* accessible) {
        auto* box = new QComboBox;
        box->setObjectName(QString::fromLatin1(name));
        box->setAccessibleName(QString::fromUtf8(accessible));
        box->setAccessibleDescription(box->accessibleName()); // a combo box tells its value for a name
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(10);
        row->addWidget(box, 1);
        return box;
    };
    rule_ = combo("filtroRegra", "Filtrar por regra");
    guide_ = combo("filtroGuia", "Filtrar por guia");
    text_ = new QLineEdit;
    text_->setObjectName(QStringLiteral("filtroTexto"));
    text_->setAccessibleName(QStringLiteral("Filtrar por texto"));
    text_->setPlaceholderText(QStringLiteral("Filtrar por texto"));
    text_->setClearButtonEnabled(true);
    text_->setMinimumWidth(fontMetrics().horizontalAdvance(text_->placeholderText()) + 40);
    row->addWidget(text_, 2);
    grouping_ = combo("agrupar", "Agrupar mensagens");
    grouping_->addItem(QStringLiteral("Agrupar por causa"), static_cast<int>(TMessageGrouping::Cause));
    grouping_->addItem(QStringLiteral("Agrupar por regra"), static_cast<int>(TMessageGrouping::Rule));
    grouping_->addItem(QStringLiteral("Não agrupar"), static_cast<int>(TMessageGrouping::None));
    connect(rule_, &QComboBox::currentIndexChanged, this, &TMessagePanel::ApplyFilter);
    connect(guide_, &QComboBox::currentIndexChanged, this, &TMessagePanel::ApplyFilter);
    connect(text_, &QLineEdit::textChanged, this, [this] { typing_->start(); });
    connect(grouping_, &QComboBox::currentIndexChanged, this, [this] {
        const auto current = Current();
        model_->SetGrouping(static_cast<TMessageGrouping>(grouping_->currentData().toInt()));
        if (current)
            Select(*current);
    });
}

QWidget* TMessagePanel::Details() const {
    return details_;
}

void TMessagePanel::ShowMessages(TXmlMessages messages) {
    const unsigned filling = ++fillings_;
    nothing_->hide();
    if (messages.size() <= kFewMessages) {
        Fill(std::make_shared<const TMessageDigest>(std::move(messages)));
        return;
    }
    RunBeside(
        this, [messages = std::move(messages)] { return std::make_shared<const TMessageDigest>(messages); },
        [this, filling](TOutcome<std::shared_ptr<const TMessageDigest>> digest) {
            if (filling == fillings_)
                Fill(digest.Take());
        });
}

void TMessagePanel::ShowNothing(const QString& why) {
    ++fillings_;
    Fill(std::make_shared<const TMessageDigest>(TXmlMessages{}));
    nothing_->setText(why);
    nothing_->setVisible(!why.isEmpty());
}

void TMessagePanel::Fill(const std::shared_ptr<const TMessageDigest>& digest) {
    left_.clear();
    model_->SetDigest(digest);
    const TMessageFilter& filter = model_->Table().Filter();
    for (QComboBox* box : {rule_, guide_}) {
        box->blockSignals(true);
        box->clear();
    }
    rule_->addItem(QStringLiteral("Todas as regras"), QString());
    for (const TValidationIdentity* rule : digest->Rules())
        rule_->addItem(ToQt(rule->Description), ToQt(rule->Name));
    guide_->addItem(QStringLiteral("Todas as guias"), QString());
    QStringList guides;
    for (const std::string& guide : digest->Guides())
        guides << ToQt(guide);
    guide_->addItems(guides);
    rule_->setCurrentIndex(std::max(0, rule_->findData(ToQt(filter.Rule))));
    guide_->setCurrentIndex(filter.Guide.empty() ? 0 : std::max(0, guide_->findText(ToQt(filter.Guide))));
    for (QComboBox* box : {rule_, guide_})
        box->blockSignals(false);
    UpdateCounts();
    ShowDetails();
    Restore(std::exchange(wanted_, std::nullopt));
    emit Shown();
}

void TMessagePanel::UpdateCounts() {
    const TMessageCounts& counts = model_->Table().Digest().Counts();
    for (std::size_t i = 0; i < severities_.size(); ++i) {
        std::size_t count = 0;
        for (const TMessageType type : ShownSeverities()[i].second)
            count += counts.Of(type);
        const QString text = QStringLiteral("%1: %2").arg(QString::fromUtf8(ShownSeverities()[i].first),
                                                          QLocale().toString(count));
        severities_[i]->setText(text);
        severities_[i]->setAccessibleName(text);
    }
}

void TMessagePanel::ApplyFilter() {
    TMessageFilter filter;
    for (std::size_t i = 0; i < severities_.size(); ++i)
        for (const TMessageType type : ShownSeverities()[i].second)
            filter.Hidden[static_cast<std::size_t>(type)] = !severities_[i]->isChecked();
    filter.Rule = FromQt(rule_->currentData().toString());
    if (guide_->currentIndex() > 0)
        filter.Guide = FromQt(guide_->currentText());
    filter.Text = FromQt(text_->text());
    filter.Left = left_;
    if (filter == model_->Table().Filter())
        return;
    const auto current = Current();
    model_->SetFilter(std::move(filter));
    if (current)
        Select(*current);
    else
        ShowDetails();
}

std::optional<std::size_t> TMessagePanel::Current() const {
    return model_->MessageAt(view_->currentIndex());
}

void TMessagePanel::SelectIndex(const QModelIndex& index) {
    view_->setCurrentIndex(index);
    view_->scrollTo(index);
}

void TMessagePanel::Select(std::size_t message) {
    const QModelIndex index = model_->IndexOf(message);
    if (index.isValid())
        SelectIndex(index);
}

std::optional<TMessagePanel::TFocus> TMessagePanel::Focus() const {
    const QModelIndex index = view_->currentIndex();
    if (!index.isValid())
        return std::nullopt;
    if (model_->rowCount(index.siblingAtColumn(0)) > 0)
        return TFocus{static_cast<std::size_t>(index.row()), true};
    const TMessageTable& table = model_->Table();
    for (std::size_t place = 0; place < table.ShownCount(); ++place)
        if (table.Shown(place) == *model_->MessageAt(index))
            return TFocus{place, false};
    return std::nullopt;
}

void TMessagePanel::Restore(std::optional<TFocus> focus) {
    const TMessageTable& table = model_->Table();
    if (!focus || table.ShownCount() == 0) {
        wanted_ = focus;
        return;
    }
    if (focus->Group)
        SelectIndex(model_->index(static_cast<int>(std::min(focus->Place, table.RowCount() - 1)), 0));
    else
        Select(table.Shown(std::min(focus->Place, table.ShownCount() - 1)));
}

void TMessagePanel::ShowDetails() {
    while (buttons_->count() > 1)
        delete std::unique_ptr<QLayoutItem>(buttons_->takeAt(0))->widget();
    const auto current = Current();
    if (!current) {
        details_->clear();
        return;
    }
    const TXmlMessage& message = *Messages()[*current];
    QString text = QStringLiteral("<p><b>%1</b>").arg(SeverityName(message.MsgType()));
    if (const QString place = ToQt(message.Place()); !place.isEmpty())
        text += QLatin1Char(' ') + place.toHtmlEscaped();
    text += QStringLiteral("<br/>") +
            ReasonOf(message).toHtmlEscaped().replace(QLatin1Char('\n'), QStringLiteral("<br/>"));
    if (message.Rule() != nullptr)
        text += QStringLiteral("<br/><i>%1</i> (%2)")
                    .arg(ToQt(message.Rule()->Description).toHtmlEscaped(), ToQt(RuleName(message)));
    details_->setHtml(text + QStringLiteral("</p>"));
    if (const TMissingData missing = MissingDataOf(message); missing != TMissingData::Nothing) {
        const bool schemas = missing == TMissingData::Schema;
        auto* button = new QPushButton(schemas ? QStringLiteral("Importar schemas...")
                                               : QStringLiteral("Importar terminologia..."));
        connect(button, &QPushButton::clicked, this, [this, schemas] {
            emit SettingsWanted(schemas ? TSettingsPage::Schemas : TSettingsPage::Terminologia);
        });
        buttons_->insertWidget(0, button);
    }
    for (std::size_t i = 0; i < std::min(message.Solvers().size(), kMostButtons); ++i) {
        const QString description = ToQt(message.Solvers()[i]->Description()).trimmed();
        auto* button =
            new QPushButton(fontMetrics().elidedText(description.section(QLatin1Char('\n'), 0, 0)
                                                         .trimmed()
                                                         .replace(QLatin1Char('&'), QStringLiteral("&&")),
                                                     Qt::ElideRight, 60 * fontMetrics().averageCharWidth()));
        button->setObjectName(QStringLiteral("correcao%1").arg(i + 1));
        button->setIcon(IconOf(QStringLiteral("corrigir")));
        button->setToolTip(description);
        button->setAccessibleName(QStringLiteral("Corrigir: ") + description);
        connect(button, &QPushButton::clicked, this,
                [this, message = *current, i] { emit CorrectionWanted(message, i); });
        buttons_->insertWidget(static_cast<int>(i), button);
    }
}

void TMessagePanel::OpenMenu() {
    const QModelIndex index = view_->currentIndex();
    if (index.isValid())
        ShowMenu(view_->visualRect(index).bottomLeft());
}

void TMessagePanel::ShowMenu(const QPoint& place) {
    QMenu menu(this);
    if (const auto current = Current()) {
        const TXmlMessage& message = *Messages()[*current];
        for (std::size_t i = 0; i < message.Solvers().size(); ++i)
            menu.addAction(IconOf(QStringLiteral("corrigir")),
                           ToQt(message.Solvers()[i]->Description())
                               .trimmed()
                               .replace(QLatin1Char('&'), QStringLiteral("&&")),
                           this, [this, message = *current, i] { emit CorrectionWanted(message, i); });
        const QString rule = ToQt(RuleName(message));
        const auto ofRule = [&](const QString& text, void (TMessagePanel::*wanted)(const QString&),
                                bool enabled) {
            menu.addAction(text, this, [this, rule, wanted] { emit(this->*wanted)(rule); })
                ->setEnabled(enabled && !rule.isEmpty());
        };
        ofRule(QStringLiteral("Corrigir todas desta regra"), &TMessagePanel::RuleCorrectionWanted,
               !message.Solvers().empty());
        menu.addSeparator();
        ofRule(QStringLiteral("Sobre esta regra"), &TMessagePanel::HelpWanted, true);
        ofRule(QStringLiteral("Desativar esta regra..."), &TMessagePanel::RuleSwitchWanted, true);
        menu.addAction(
                QStringLiteral("Mostrar no formulário..."), this,
                [this, line = message.Line(), linePos = message.LinePos()] { emit BoxWanted(line, linePos); })
            ->setShortcut(QKeySequence(QStringLiteral("F7"))); // told here; the window's menu has it
        menu.addSeparator();
        menu.addAction(QStringLiteral("Copiar"), this, &TMessagePanel::CopySelected);
        menu.addAction(QStringLiteral("Ocultar estas"), this, &TMessagePanel::HideSelected);
    }
    menu.addAction(QStringLiteral("Mostrar as ocultas"), this, &TMessagePanel::ShowHidden)
        ->setEnabled(!left_.empty());
    menu.exec(view_->viewport()->mapToGlobal(place));
}

void TMessagePanel::CopySelected() {
    QStringList lines;
    for (const QModelIndex& index : view_->selectionModel()->selectedRows())
        for (const std::size_t message : model_->MessagesAt(index))
            lines << model_->LineOf(message);
    QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

void TMessagePanel::HideSelected() {
    left_.resize(Messages().size());
    for (const QModelIndex& index : view_->selectionModel()->selectedRows())
        for (const std::size_t message : model_->MessagesAt(index))
            left_[message] = true;
    const auto focus = Focus();
    ApplyFilter();
    Restore(focus);
}

void TMessagePanel::ShowHidden() {
    left_.clear();
    ApplyFilter();
}

bool TMessagePanel::eventFilter(QObject* watched, QEvent* event) {
    if (watched == view_ && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            if (const auto message = Current(); message && key->modifiers() == Qt::NoModifier) {
                emit Activated(*message);
                return true;
            }
        }
        if (key->matches(QKeySequence::Copy)) {
            CopySelected();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void TMessagePanel::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        view_->viewport()->update();
}

QByteArray TMessagePanel::SaveState() const {
    QByteArray state;
    QDataStream stream(&state, QIODevice::WriteOnly);
    stream << view_->header()->saveState() << grouping_->currentIndex();
    return state;
}

void TMessagePanel::RestoreState(const QByteArray& state) {
    QDataStream stream(state);
    QByteArray header;
    int grouping = 0;
    stream >> header >> grouping;
    if (stream.status() != QDataStream::Ok)
        return;
    view_->header()->restoreState(header);
    grouping_->setCurrentIndex(std::clamp(grouping, 0, grouping_->count() - 1));
}

} // namespace conferix
