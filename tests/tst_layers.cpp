// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QTest>

/// A target of the program, as the build knows it.
struct Layer {
    QString name;
    /// Paths below the folder of the sources.
    QStringList files;
    QStringList links;
};

namespace
{

/// From the bottom up.
QVector<Layer> layers()
{
    QFile file(LAYERS);
    if (!file.open(QFile::ReadOnly)) {
        qFatal("no list of the layers");
    }
    const QDir sources(SOURCES);
    const QDir build(BUILD);
    QVector<Layer> all;
    for (const QString &line : QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts)) {
        const QStringList parts = line.split('|');
        Layer layer = {parts.at(0), {}, parts.at(2).split(';', Qt::SkipEmptyParts)};
        for (const QString &name : parts.at(1).split(';', Qt::SkipEmptyParts)) {
            const QString path = QDir::cleanPath(sources.absoluteFilePath(name));
            // What the build makes itself is no source.
            if (!path.startsWith(build.absolutePath() + '/')) {
                layer.files << sources.relativeFilePath(path);
            }
        }
        all << layer;
    }
    return all;
}

/// The names between quotes that the file includes.
QStringList includesOf(const QString &file)
{
    QFile source(QDir(SOURCES).filePath(file));
    if (!source.open(QFile::ReadOnly)) {
        qFatal("cannot read %s", qPrintable(file));
    }
    static const QRegularExpression include("^\\s*#\\s*include\\s*\"([^\"]+)\"",
                                            QRegularExpression::MultilineOption);
    QStringList names;
    auto matches = include.globalMatch(QString::fromUtf8(source.readAll()));
    while (matches.hasNext()) {
        names << matches.next().captured(1);
    }
    return names;
}

} // namespace

/// The layers of the program, as CMake lists their sources and libraries.
class TestLayers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySourceIsOfOneLayer()
    {
        QStringList listed;
        for (const Layer &layer : layers()) {
            listed << layer.files;
        }
        listed.sort();
        QStringList present;
        QDirIterator files(SOURCES, {"*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            present << QDir(SOURCES).relativeFilePath(files.next());
        }
        present.sort();
        QCOMPARE(listed, present);
    }

    void noLayerIncludesAnUpperOne()
    {
        QMap<QString, int> levels;
        const QVector<Layer> all = layers();
        for (int level = 0; level < all.size(); ++level) {
            for (const QString &file : all.at(level).files) {
                levels.insert(file, level);
            }
        }
        QStringList faults;
        int known = 0;
        for (auto file = levels.cbegin(); file != levels.cend(); ++file) {
            for (const QString &name : includesOf(file.key())) {
                known += levels.contains(name) ? 1 : 0;
                if (levels.value(name, -1) > file.value()) {
                    faults << file.key() + " includes " + name;
                }
            }
        }
        QCOMPARE(faults, QStringList());
        // A test that finds no include at all would find no fault either.
        QVERIFY(known > levels.size());
    }

    void noLayerLinksAnUpperOne()
    {
        QStringList below;
        const QVector<Layer> all = layers();
        for (const Layer &layer : all) {
            for (const QString &library : layer.links) {
                if (library.startsWith("glymark_") && library != "glymark_options") {
                    QVERIFY2(below.contains(library), qPrintable(layer.name + " links " + library));
                }
            }
            // The lowest stands on the toolkit alone.
            QCOMPARE(below.isEmpty(), layer.links.filter("glymark_").size() == 1);
            below << layer.name;
        }
    }

    void whatHasNoWidgetsLinksNone_data()
    {
        QTest::addColumn<int>("level");
        QTest::newRow("base") << 0;
        QTest::newRow("xlsx") << 1;
        QTest::newRow("core") << 2;
    }

    void whatHasNoWidgetsLinksNone()
    {
        QFETCH(int, level);
        const Layer layer = layers().at(level);
        QCOMPARE(layer.name, QString("glymark_") + QTest::currentDataTag());
        QCOMPARE(layer.links.filter("Widgets"), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestLayers)
#include "tst_layers.moc"
