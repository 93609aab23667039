#pragma once

#include "linkedlist.h"

#include <QColor>
#include <QFile>
#include <QObject>
#include <QString>
#include <QTimer>

// A binary recorder of curves. The file, little-endian:
//
//   head               2 magic 43 4E, u16 version 100, u32 count of information blocks, u32 period
//   information block  u32 length of the name, u32 length of the value, both texts
//   plot               u16 length of the name, u16 length of the unit, u16 kind, u16 count of graphs, u16
//   count
//                      of plots that follow this one, both texts, for kinds 0 and 1 the u16 value, its graphs
//   graph              u8 red, u8 green, u8 blue, u8 zero, u16 length of the name, the name
//   sample             for each plot, each graph: f32; ten a second until the end of the file
//
// Lengths are bytes of UTF-8; texts have no terminator.
namespace NovCertFormat3 {

class AbstractErrorHandler
{
public:
    enum Code { OpenFailed = 0, HeadCutShort = 4, SampleCutShort = 5 };

    virtual ~AbstractErrorHandler() = default;
    virtual void OnError(int code) = 0; // the recorder is stopped
};

class InformationBlock
{
public:
    InformationBlock(const QString& name, const QString& value)
        : m_name(name)
        , m_value(value)
    {}
    const QString& GetName() const { return m_name; }
    const QString& GetValue() const { return m_value; }

private:
    QString m_name;
    QString m_value;
};

// One curve.
class Graph
{
public:
    Graph(const QString& name, const QColor& colour)
        : m_name(name)
        , m_colour(colour)
    {}
    const QString& GetName() const { return m_name; }
    const QColor& GetColour() const { return m_colour; }
    float GetValue() const { return m_value; }
    void SetValue(float value) { m_value = value; } // what the next samples carry

private:
    QString m_name;
    QColor m_colour;
    float m_value = 0;
};

// Curves that share an axis.
class Plot : public LinkedList::Manager<Graph>
{
public:
    Plot(const QString& name, const QString& unit, quint16 kind)
        : m_name(name)
        , m_unit(unit)
        , m_kind(kind)
    {}
    virtual ~Plot() = default;
    const QString& GetName() const { return m_name; }
    const QString& GetUnitName() const { return m_unit; }
    quint16 GetKind() const { return m_kind; }
    virtual quint16 GetValue() const = 0; // goes into the file for the kinds 0 and 1

private:
    QString m_name;
    QString m_unit;
    quint16 m_kind;
};

// Records the graphs of its plots ten times a second. The lists may change between `Stop` and `Start` only.
// Nothing in the console starts one at present.
class Writer : public QObject
{
    Q_OBJECT

public:
    // The handler outlives the writer. `period` goes into the head and changes nothing else.
    Writer(AbstractErrorHandler* handler, const QString& fileName, quint32 period, QObject* parent = nullptr);

    LinkedList::Manager<InformationBlock>& InformationBlocks() { return m_blocks; }
    LinkedList::Manager<Plot>& Plots() { return m_plots; }

    void Start(); // begins the file anew
    void Stop();
    bool IsRunning() const { return m_timer.isActive(); }

signals:
    void OnUpdate(); // a sample has been written: time to set the values of the next one

private slots:
    void OnTimeout();

private:
    bool write(const QByteArray& bytes, int code);
    QByteArray head() const;

    AbstractErrorHandler* m_handler;
    QFile m_file;
    quint32 m_period;
    LinkedList::Manager<InformationBlock> m_blocks;
    LinkedList::Manager<Plot> m_plots;
    QTimer m_timer;
};

} // namespace NovCertFormat3
