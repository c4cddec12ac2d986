// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include "xlsx/reading/differential/dicedworkbook.h"

/// An element that says something of cells, and where it stands.
struct Place {
    DicedWorkbook::Part *part = nullptr;
    XmlPiece *parent = nullptr;
    std::size_t index = 0;

    XmlPiece &element() const { return parent->content.at(index); }
    explicit operator bool() const { return parent != nullptr; }
};

/// One of those elements, with one of the \p names if any are given; an empty place if none fits.
Place pickPlace(DicedWorkbook *workbook, Dice *dice, const QStringList &names = {});

/// Any element of a part that is read, its first one included.
XmlPiece *pickElement(DicedWorkbook *workbook, Dice *dice);

/// Adds \p piece somewhere to what \p parent holds.
void insertAnywhere(XmlPiece *parent, const XmlPiece &piece, Dice *dice);

/// Declares on \p element that the namespace \p space is ignorable.
void declareIgnorable(XmlPiece *element, const QString &space);

/// A namespace other than \p space, or none.
QString otherSpace(const QString &space, Dice *dice);
/// Puts \p piece and what it holds into the namespace \p to, as far as it is in \p from.
void moveToSpace(XmlPiece *piece, const QString &from, const QString &to);
/// One of the attributes of the element that say something of cells; null without any.
XmlPiece::Attribute *pickAttribute(const Place &place, Dice *dice);

/// An element of the markup for compatibility.
XmlPiece compatibilityPiece(const QString &name);
/// An empty element.
XmlPiece pieceOf(const QString &space, const QString &name);
