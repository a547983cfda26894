#include "app/desktop/information_panel.h"

#include "app/desktop/text.h"

#include <QHeaderView>

namespace conferix {

TInformationPanel::TInformationPanel(QWidget* parent) : QTreeWidget(parent) {
    setObjectName(QStringLiteral("informacoes"));
    setAccessibleName(QStringLiteral("Informações do arquivo"));
    setColumnCount(2);
    setHeaderLabels({QStringLiteral("Informação"), QStringLiteral("Valor")});
    setRootIsDecorated(false);
    setAlternatingRowColors(true);
    setWordWrap(true);
    header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    header()->setStretchLastSection(true);
}

void TInformationPanel::ShowInformations(const TInformations& groups) {
    clear();
    for (const TInformationGroup& group : groups) {
        auto* top = new QTreeWidgetItem(this, {Q(group.Titulo)});
        QFont bold = font();
        bold.setBold(true);
        top->setFont(0, bold);
        top->setFirstColumnSpanned(true);
        for (const auto& [label, value] : group.Linhas) {
            auto* row = new QTreeWidgetItem(top, {Q(label), Q(value)});
            row->setToolTip(1, Q(value));
        }
        top->setExpanded(true);
    }
}

} // namespace conferix
