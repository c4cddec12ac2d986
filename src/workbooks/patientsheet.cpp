// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/patientsheet.h"

#include <algorithm>

namespace
{

void putHeadings(RowCells &cells, const Headings &headings)
{
    for (int i = 0; i < headings.size(); ++i) {
        if (!headings.at(i).isEmpty()) {
            cells.text(i + 1, headings.at(i));
        }
    }
}

/// All ordered pairs of different numbers below \p count.
QVector<QPair<int, int>> orderedPairs(int count)
{
    QVector<QPair<int, int>> pairs;
    for (int left = 0; left < count; ++left) {
        for (int right = 0; right < count; ++right) {
            if (right != left) {
                pairs.append({left, right});
            }
        }
    }
    return pairs;
}

} // namespace

CellSheet patientSheet(const QString &name, const QVector<Headings> &headings, int patientCount,
                       const PatientCells &patientCells, const Notes &notes)
{
    const int headingRows = int(headings.size());
    const int lastNoteRow = notes.isEmpty() ? 0 : notes.constLast().row;
    const auto fill = [=](int row, RowCells &cells) {
        const int patient = row - headingRows - 1;
        if (row <= headingRows) {
            putHeadings(cells, headings.at(row - 1));
        } else if (patient < patientCount) {
            patientCells(patient, cells);
        }
        for (const Note &note : notes) {
            if (note.row == row) {
                cells.text(note.column, QString::fromLatin1(note.text));
            }
        }
    };
    return {name, {std::max(headingRows + patientCount, lastNoteRow), fill}};
}

CellSheet comparisonSheet(const QString &name, const Headings &headings,
                          const QVector<PatientRecord> &patients, const PatientTable &table,
                          int reference, const Notes &notes)
{
    const auto patientCells = [&patients, table, reference](int patient, RowCells &cells) {
        const QVector<int> &numbers = table.at(patient);
        int column = 1;
        cells.text(column++, patients.at(patient).id);
        cells.number(column++, numbers.at(reference));
        int sameCount = 0;
        for (int other = 0; other < numbers.size(); ++other) {
            if (other != reference) {
                const int same = numbers.at(other) == numbers.at(reference) ? 1 : 0;
                cells.number(column++, same);
                sameCount += same;
            }
        }
        cells.number(column, double(sameCount) / double(numbers.size() - 1));
    };
    return patientSheet(name, {headings}, int(patients.size()), patientCells, notes);
}

CellSheet columnPairSheet(const QString &name, int firstColumn, const QStringList &labels,
                          const PatientTable &table)
{
    const QVector<QPair<int, int>> pairs = orderedPairs(int(labels.size()));
    Headings headings = QVector<QString>(firstColumn - 1).toList();
    for (const auto &[left, right] : pairs) {
        headings << labels.at(left) << labels.at(right) << QString();
    }
    const auto patientCells = [pairs, table, firstColumn](int patient, RowCells &cells) {
        int column = firstColumn;
        for (const auto &[left, right] : pairs) {
            cells.number(column++, table.at(patient).at(left));
            cells.number(column++, table.at(patient).at(right));
            ++column;
        }
    };
    return patientSheet(name, {headings}, int(table.size()), patientCells);
}
