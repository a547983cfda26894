#include "app/desktop/dialogs/schemas_page.h"

#include "app/desktop/dialogs/cell_table.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/file_choice.h"
#include "app/desktop/dialogs/work_bar.h"
#include "app/installation.h"
#include "data/constantes.h"
#include "platform/platform.h"

#include <QDateTime>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

#include <memory>

namespace conferix {

namespace {

const auto kTitle = QStringLiteral("Schemas");

} // namespace

TSchemasPage::TSchemasPage(QWidget* parent)
    : QWidget(parent), folder_(new QLabel(this)),
      table_(new TCellTable(QStringLiteral("Schemas das versões"),
                            {QStringLiteral("Tipo"), QStringLiteral("Versão"), QStringLiteral("Situação"),
                             QStringLiteral("Arquivo"), QStringLiteral("Importado em")},
                            2, this)),
      importFile_(new QPushButton(QStringLiteral("&Importar ZIP..."), this)),
      importFolder_(new QPushButton(QStringLiteral("Importar &pasta..."), this)),
      remove_(new QPushButton(QStringLiteral("&Voltar ao embutido"), this)), work_(new TWorkBar(this)) {
    setAcceptDrops(true);
    folder_->setTextFormat(Qt::PlainText);
    folder_->setWordWrap(true);
    folder_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto* const hint =
        new QLabel(QStringLiteral("Os schemas de todas as versões vêm com o programa. Os publicados pela ANS "
                                  "(o ZIP do Componente de Comunicação, ou uma pasta) podem ser importados, "
                                  "também soltando-os aqui, e passam a ser usados primeiro."),
                   this);
    hint->setWordWrap(true);
    auto* const buttons = new QHBoxLayout;
    for (QPushButton* button : {importFile_, importFolder_, remove_})
        buttons->addWidget(button);
    buttons->addStretch();
    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(folder_);
    lines->addWidget(table_);
    lines->addWidget(hint);
    lines->addLayout(buttons);
    lines->addWidget(work_);

    connect(importFile_, &QPushButton::clicked, this, [this] {
        for (const QString& file :
             AskForFiles(this, QStringLiteral("Importar schemas"),
                         QStringLiteral("Componente de Comunicação (*.zip);;Todos os arquivos (*)"), false))
            Import(PathFromText(FromQt(file)));
    });
    connect(importFolder_, &QPushButton::clicked, this, [this] {
        const QString folder = AskForFolder(this, QStringLiteral("Importar pasta de schemas"));
        if (!folder.isEmpty())
            Import(PathFromText(FromQt(folder)));
    });
    connect(remove_, &QPushButton::clicked, this, &TSchemasPage::GoBack);
    connect(table_, &QTableWidget::itemSelectionChanged, this, &TSchemasPage::ShowButtons);
    connect(work_, &TWorkBar::RunningChanged, this, &TSchemasPage::ShowButtons);
    ShowButtons();
}

void TSchemasPage::Refresh() {
    if (work_->Running())
        return;
    const auto schemas = std::make_shared<std::vector<TMainSchema>>();
    work_->Run(
        TWorkKind::Reading, QStringLiteral("Lendo os schemas..."),
        [schemas](const TWork&) { *schemas = ListSchemas(InstalledSchemas()); },
        [this, schemas](const std::exception_ptr& failure) {
            if (failure != nullptr) {
                folder_->setText(ReasonOf(failure));
                return;
            }
            schemas_ = *schemas;
            ShowSchemas();
        });
}

void TSchemasPage::ShowSchemas() {
    const QString folder = ToQt(PathText(InstalledSchemas().Folder()));
    folder_->setText(QStringLiteral("Pasta dos schemas importados: ") + folder);
    std::vector<QStringList> rows;
    for (const TMainSchema& schema : schemas_) {
        const QString file = ToQt(schema.FileName);
        QString imported;
        if (schema.Origin == TSchemaOrigin::Imported)
            imported = QFileInfo(folder + u'/' + file).lastModified().toString(QStringLiteral("dd/MM/yyyy"));
        rows.push_back(
            {ToQt(schema.Kind->Title), ToQt(schema.Versao), ToQt(schema.StateText()), file, imported});
    }
    table_->SetRows(rows);
    ShowButtons();
}

void TSchemasPage::ShowButtons() {
    const int row = table_->SelectedRow();
    importFile_->setEnabled(!work_->Running());
    importFolder_->setEnabled(!work_->Running());
    remove_->setEnabled(!work_->Running() && row >= 0 && static_cast<std::size_t>(row) < schemas_.size() &&
                        schemas_[static_cast<std::size_t>(row)].Origin == TSchemaOrigin::Imported);
}

void TSchemasPage::Import(const std::filesystem::path& source) {
    if (work_->Running())
        return;
    const auto import = std::make_shared<TSchemaImport>();
    work_->Run(
        TWorkKind::Changing, QStringLiteral("Importando schemas..."),
        [source, import](const TWork&) {
            *import = ImportSchemas(source, TConstantes::SchemaTissDirectory());
        },
        [this, import](const std::exception_ptr& failure) {
            if (failure != nullptr)
                ShowFailure(this, kTitle, FromQt(ReasonOf(failure)));
            else
                TellImport(*import);
            Refresh();
        });
}

void TSchemasPage::TellImport(const TSchemaImport& import) {
    if (import.Schemas.empty()) {
        ShowFailure(this, kTitle, "Não há schemas do padrão TISS (tissV*.xsd, tissMonitoramentoV*.xsd) aí.");
        return;
    }
    emit Changed();
    const std::string text = import.Summary();
    if (import.Failed())
        ShowFailure(this, kTitle, text);
    else
        ShowNotice(this, kTitle, text);
}

void TSchemasPage::GoBack() {
    const TMainSchema schema = schemas_[static_cast<std::size_t>(table_->SelectedRow())];
    if (!AskYesNo(this, kTitle,
                  "Os schemas importados da versão " + schema.Versao +
                      " serão removidos, e voltam a valer os que vieram com o programa. Confirma?"))
        return;
    try {
        RemoveSchemas(InstalledSchemas(), schema.Versao);
        emit Changed();
    } catch (const std::exception& error) {
        ShowFailure(this, kTitle, error.what());
    }
    Refresh();
}

void TSchemasPage::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->urls().size() == 1 && !work_->Running())
        event->acceptProposedAction();
}

void TSchemasPage::dropEvent(QDropEvent* event) {
    event->acceptProposedAction();
    Import(PathFromText(FromQt(event->mimeData()->urls().front().toLocalFile())));
}

} // namespace conferix
