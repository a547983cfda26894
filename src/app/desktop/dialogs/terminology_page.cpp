#include "app/desktop/dialogs/terminology_page.h"

#include "app/desktop/dialogs/cell_table.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/file_choice.h"
#include "app/desktop/dialogs/import_result.h"
#include "app/desktop/dialogs/work_bar.h"
#include "data/database_tuss.h"
#include "data/tuss_search.h"
#include "platform/format_settings.h"
#include "platform/platform.h"
#include "rules/tuss_validation.h"

#include <QComboBox>
#include <QDragEnterEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include <memory>

namespace conferix {

namespace {

const auto kTitle = QStringLiteral("Terminologia");
constexpr int kTypingMs = 150;
constexpr std::size_t kTermsShown = 200;

QString DateText(const std::optional<TDate>& date) {
    return date ? ToQt(FormatUserDate(*date)) : QString();
}

QString ValidityText(const TFoundTerm& term) {
    if (term.InicioVigencia && term.FimVigencia)
        return DateText(term.InicioVigencia) + QStringLiteral(" a ") + DateText(term.FimVigencia);
    if (term.InicioVigencia)
        return QStringLiteral("desde ") + DateText(term.InicioVigencia);
    return term.FimVigencia ? QStringLiteral("até ") + DateText(term.FimVigencia) : QString();
}

QStringList RowOf(const TTerminologyTable& table, const TFormatSettings& formats) {
    const QString imported =
        table.Import ? DateText(ParseIsoDate(table.Import->Time.substr(0, 10))) : QString();
    return {ToQt(table.Tabela),
            ToQt(table.Description),
            ToQt(table.StateText()),
            table.Rows > 0 ? ToQt(formats.Count(table.Rows)) : QString(),
            DateText(table.NewestStart),
            imported,
            table.Import ? ToQt(table.Import->File) : QString()};
}

} // namespace

TTerminologyPage::TTerminologyPage(QWidget* parent)
    : QWidget(parent), base_(new QLabel(this)),
      tables_(
          new TCellTable(QStringLiteral("Tabelas da terminologia"),
                         {QStringLiteral("Tabela"), QStringLiteral("Descrição"), QStringLiteral("Situação"),
                          QStringLiteral("Termos"), QStringLiteral("Início mais recente"),
                          QStringLiteral("Importada em"), QStringLiteral("Arquivo")},
                         6, this)),
      importFiles_(new QPushButton(QStringLiteral("&Importar arquivos..."), this)),
      importFolder_(new QPushButton(QStringLiteral("Importar &pasta..."), this)),
      restore_(new QPushButton(QStringLiteral("&Voltar à base original"), this)), words_(new QLineEdit(this)),
      table_(new QComboBox(this)),
      terms_(new TCellTable(QStringLiteral("Termos encontrados"),
                            {QStringLiteral("Tabela"), QStringLiteral("Código"), QStringLiteral("Termo"),
                             QStringLiteral("Vigência")},
                            2, this)),
      found_(new QLabel(this)), work_(new TWorkBar(this)), typing_(new QTimer(this)) {
    setAcceptDrops(true);
    base_->setTextFormat(Qt::PlainText);
    base_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    base_->setWordWrap(true);
    tables_->SetNumbers({3});
    auto* const hint =
        new QLabel(QStringLiteral("Importe as publicações da ANS como foram baixadas (ZIP, XLSX, "
                                  "CSV, JSON, TXT): pelos botões, ou soltando-as aqui."),
                   this);
    hint->setWordWrap(true);
    words_->setPlaceholderText(QStringLiteral("Palavras da descrição, ou um código"));
    words_->setClearButtonEnabled(true);
    words_->setAccessibleName(QStringLiteral("Procurar termos"));
    table_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    table_->setAccessibleName(QStringLiteral("Tabela em que procurar"));
    found_->setTextFormat(Qt::PlainText);

    auto* const buttons = new QHBoxLayout;
    for (QPushButton* button : {importFiles_, importFolder_, restore_})
        buttons->addWidget(button);
    buttons->addStretch();
    auto* const search = new QGroupBox(QStringLiteral("Procurar termos"), this);
    auto* const searchLine = new QHBoxLayout;
    searchLine->addWidget(words_, 1);
    searchLine->addWidget(table_);
    auto* const searchLines = new QVBoxLayout(search);
    searchLines->addLayout(searchLine);
    searchLines->addWidget(terms_);
    searchLines->addWidget(found_);
    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(base_);
    lines->addWidget(tables_, 3);
    lines->addWidget(hint);
    lines->addLayout(buttons);
    lines->addWidget(work_);
    lines->addWidget(search, 2);

    typing_->setSingleShot(true);
    typing_->setInterval(kTypingMs);
    connect(typing_, &QTimer::timeout, this, &TTerminologyPage::Search);
    connect(words_, &QLineEdit::textChanged, typing_, qOverload<>(&QTimer::start));
    connect(table_, &QComboBox::currentIndexChanged, typing_, qOverload<>(&QTimer::start));
    connect(importFiles_, &QPushButton::clicked, this, [this] {
        std::vector<std::filesystem::path> files;
        for (const QString& file :
             AskForFiles(this, QStringLiteral("Importar terminologia"),
                         QStringLiteral("Publicações da ANS (*.zip *.xlsx *.csv *.json *.txt);;"
                                        "Todos os arquivos (*)"),
                         true))
            files.push_back(PathFromText(FromQt(file)));
        Import(files);
    });
    connect(importFolder_, &QPushButton::clicked, this, [this] {
        const QString folder = AskForFolder(this, QStringLiteral("Importar pasta de terminologia"));
        if (!folder.isEmpty())
            Import({PathFromText(FromQt(folder))});
    });
    connect(restore_, &QPushButton::clicked, this, &TTerminologyPage::Restore);
    connect(work_, &TWorkBar::RunningChanged, this, [this](bool running) {
        for (QPushButton* button : {importFiles_, importFolder_, restore_})
            button->setEnabled(!running);
    });
}

void TTerminologyPage::Refresh() {
    if (work_->Running())
        return;
    const auto state = std::make_shared<TTerminologyState>();
    work_->Run(
        TWorkKind::Reading, QStringLiteral("Lendo a base de terminologia..."),
        [state](const TWork&) { *state = ReadTerminologyState(); },
        [this, state](const std::exception_ptr& failure) {
            if (failure != nullptr) {
                base_->setText(ReasonOf(failure));
                tables_->SetRows({});
            } else {
                ShowState(*state);
            }
        });
}

void TTerminologyPage::ShowState(const TTerminologyState& state) {
    base_->setText(ToQt(state.Summary()));
    const TFormatSettings formats = TFormatSettings::Regional();
    std::vector<QStringList> rows;
    const QString chosen = table_->currentData().toString();
    const QSignalBlocker quiet(table_);
    table_->clear();
    table_->addItem(QStringLiteral("Todas as tabelas"), QString());
    for (const TTerminologyTable& table : state.Tables) {
        rows.push_back(RowOf(table, formats));
        if (table.Installed && table.IsOfTerms())
            table_->addItem(QStringLiteral("Tabela ") + ToQt(table.Tabela), ToQt(table.Tabela));
    }
    table_->setCurrentIndex(std::max(0, table_->findData(chosen)));
    tables_->SetRows(rows);
    Search();
}

void TTerminologyPage::Import(const std::vector<std::filesystem::path>& sources) {
    if (sources.empty() || work_->Running())
        return;
    TImportOptions options;
    options.Sources = sources;
    options.Target = TDatabaseTuss::ImportTarget();
    options.Delivered = TDatabaseTuss::DeliveredFileName();
    const auto report = std::make_shared<TImportReport>();
    work_->Run(
        TWorkKind::Changing, QStringLiteral("Importando a terminologia..."),
        [options, report](const TWork& work) mutable {
            options.Stop = &work.Stop;
            options.OnProgress = [&work](const std::string& what, double fraction) {
                work.Tell(ToQt(what), fraction);
            };
            *report = ImportTerminology(options);
        },
        [this, report](const std::exception_ptr& failure) {
            if (failure == nullptr) {
                emit Changed();
                TFImportResult(*report, this).exec();
            } else {
                ShowFailure(this, kTitle, FromQt(ReasonOf(failure)));
            }
            Refresh();
        });
}

void TTerminologyPage::Restore() {
    if (!AskYesNo(
            this, kTitle,
            "As importações feitas neste computador serão desfeitas, e volta a valer a base que veio com "
            "o programa. Confirma?"))
        return;
    try {
        if (RemoveImportedTerminology(TDatabaseTuss::ImportedFileName()))
            emit Changed();
        else
            ShowNotice(this, kTitle, "Não há importações a desfazer.");
    } catch (const std::exception& error) {
        ShowFailure(this, kTitle, error.what());
    }
    Refresh();
}

void TTerminologyPage::Search() {
    const std::string text = FromQt(words_->text().simplified());
    std::vector<QStringList> rows;
    QString told;
    if (!text.empty()) {
        try {
            const TFoundTerms found =
                SearchTerminology(text, FromQt(table_->currentData().toString()), kTermsShown);
            for (const TFoundTerm& term : found.Terms)
                rows.push_back({ToQt(term.Tabela), ToQt(term.Codigo), ToQt(term.Termo), ValidityText(term)});
            told = ToQt(found.Note);
        } catch (const std::exception& error) { // of the database; the page goes on without terms
            told = ToQt(error.what());
        }
    }
    terms_->SetRows(rows);
    found_->setText(told);
    found_->setVisible(!told.isEmpty());
}

void TTerminologyPage::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls() && !work_->Running())
        event->acceptProposedAction();
}

void TTerminologyPage::dropEvent(QDropEvent* event) {
    std::vector<std::filesystem::path> files;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile())
            files.push_back(PathFromText(FromQt(url.toLocalFile())));
    event->acceptProposedAction();
    Import(files);
}

} // namespace conferix
