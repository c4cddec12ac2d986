// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QModelIndex>
#include <QTranslator>

/// Shows what was asked for in which context: "<context:source>".
class EchoTranslator : public QTranslator
{
public:
    QString translate(const char *context, const char *source, const char * /*hint*/,
                      int /*n*/) const override
    {
        return QString("<%1:%2>").arg(context, source);
    }
    bool isEmpty() const override { return false; }
};

/// A table model that answers for the rows below an index, too: there are none. The models leave
/// that out, which QAbstractItemModelTester does not accept.
template<typename Model>
class ChildlessModel : public Model
{
public:
    using Model::Model;
    int rowCount(const QModelIndex &parent) const override
    {
        return parent.isValid() ? 0 : Model::rowCount(parent);
    }
};
