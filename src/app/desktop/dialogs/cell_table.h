#pragma once

#include <QStringList>
#include <QTableWidget>

#include <vector>

namespace conferix {

/// Shows rows of texts to be read: whole ones are selected, Tab leaves the table. `name`: of the table for
/// who cannot see it.
void ShowRows(QTableView& table, const QString& name);

/// A table of texts to be read: rows are selected whole, cells are not edited, Tab leaves it.
class TCellTable : public QTableWidget {
    Q_OBJECT

  public:
    /// `name`: of the table for who cannot see it. `wide`: the column that takes the room that is left.
    TCellTable(const QString& name, const QStringList& columns, int wide, QWidget* parent = nullptr);

    /// Columns whose texts are numbers stand to the right.
    void SetNumbers(std::vector<int> columns) { numbers_ = std::move(columns); }
    /// Replaces all rows; the row that was selected stays so where it still exists.
    void SetRows(const std::vector<QStringList>& rows);
    /// -1 for none.
    int SelectedRow() const;

  private:
    std::vector<int> numbers_;
};

} // namespace conferix
