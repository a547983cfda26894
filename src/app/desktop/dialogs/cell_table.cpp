#include "app/desktop/dialogs/cell_table.h"

#include <QHeaderView>

#include <algorithm>

namespace conferix {

namespace {

constexpr int kRowGap = 8; ///< above and below the text of a row, together

} // namespace

void ShowRows(QTableView& table, const QString& name) {
    table.setAccessibleName(name);
    table.setSelectionBehavior(QAbstractItemView::SelectRows);
    table.setTabKeyNavigation(false);
    table.setAlternatingRowColors(true);
    table.setWordWrap(false);
    table.verticalHeader()->hide();
    table.verticalHeader()->setDefaultSectionSize(table.fontMetrics().height() + kRowGap);
    table.horizontalHeader()->setHighlightSections(false);
}

TCellTable::TCellTable(const QString& name, const QStringList& columns, int wide, QWidget* parent)
    : QTableWidget(parent) {
    ShowRows(*this, name);
    setColumnCount(static_cast<int>(columns.size()));
    setHorizontalHeaderLabels(columns);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(SingleSelection);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    horizontalHeader()->setSectionResizeMode(wide, QHeaderView::Stretch);
}

void TCellTable::SetRows(const std::vector<QStringList>& rows) {
    const int selected = SelectedRow();
    setRowCount(static_cast<int>(rows.size()));
    for (int row = 0; row < rowCount(); ++row) {
        for (int column = 0; column < columnCount(); ++column) {
            const QString& text = rows[static_cast<std::size_t>(row)][column];
            auto* const cell = new QTableWidgetItem(text);
            cell->setToolTip(text);
            if (std::ranges::count(numbers_, column) != 0)
                cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            setItem(row, column, cell);
        }
    }
    for (int column = 0; column < columnCount(); ++column)
        if (horizontalHeader()->sectionResizeMode(column) != QHeaderView::Stretch)
            resizeColumnToContents(column);
    if (selected >= 0 && selected < rowCount())
        selectRow(selected);
}

int TCellTable::SelectedRow() const {
    const QList<QTableWidgetSelectionRange> ranges = selectedRanges();
    return ranges.isEmpty() ? -1 : ranges.front().topRow();
}

} // namespace conferix
