#pragma once
// One look for every window: the application's font for text, the same font in bold for
// status lines and a size larger for headings, the system's fixed-pitch font (at the text's
// size) for logs and raw lines, and the same margins and spacing in every layout.
#include <QBoxLayout>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLabel>
#include <QLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QWidget>
#include <initializer_list>

namespace tlx::style {

inline constexpr int kMargin = 10;
inline constexpr int kSpacing = 6;

// A window's layouts: the window's own gets the margins, nested ones only the spacing.
inline void window(QLayout* layout) {
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    layout->setSpacing(kSpacing);
}
inline void nested(QLayout* layout) {
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kSpacing);
}

inline void bold(QWidget* w) {
    QFont f = w->font();
    f.setBold(true);
    w->setFont(f);
}

inline void heading(QWidget* w) {
    QFont f = w->font();
    f.setBold(true);
    f.setPointSizeF(f.pointSizeF() + 2);
    w->setFont(f);
}

inline void fixedPitch(QWidget* w) {
    QFont f = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    f.setPointSizeF(QGuiApplication::font().pointSizeF());
    w->setFont(f);
}

// The state colours of status labels: green for working, red for off or failed.
enum class Tone { Plain, Good, Bad };
inline void tone(QLabel* label, Tone t) {
    label->setStyleSheet(t == Tone::Good  ? QStringLiteral("color: #1e7b34; font-weight: bold")
                         : t == Tone::Bad ? QStringLiteral("color: #b00020; font-weight: bold")
                                          : QString());
}

inline QPushButton* button(const QString& caption, const char* name) {
    auto* b = new QPushButton(caption);
    b->setObjectName(name);
    return b;
}

// A list of rows the user reads but does not edit.
inline QTableWidget* table(const QStringList& columns, const char* name) {
    auto* t = new QTableWidget(0, static_cast<int>(columns.size()));
    t->setObjectName(name);
    t->setHorizontalHeaderLabels(columns);
    t->verticalHeader()->hide();
    t->setEditTriggers(QAbstractItemView::NoEditTriggers);
    t->setSelectionBehavior(QAbstractItemView::SelectRows);
    t->setWordWrap(false);
    t->horizontalHeader()->setStretchLastSection(true);
    return t;
}

inline void setCell(QTableWidget* t, int row, int column, const QString& text) {
    auto* item = t->item(row, column);
    if (!item) t->setItem(row, column, item = new QTableWidgetItem);
    if (item->text() != text) item->setText(text);
}

// A row of buttons: the first group on the left, the second on the right (OK, Cancel ...).
inline QHBoxLayout* buttonRow(std::initializer_list<QWidget*> left, std::initializer_list<QWidget*> right) {
    auto* row = new QHBoxLayout;
    nested(row);
    for (auto* w : left) row->addWidget(w);
    row->addStretch(1);
    for (auto* w : right) row->addWidget(w);
    return row;
}

}  // namespace tlx::style
