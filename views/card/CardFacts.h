#pragma once

#include "model/PortInfo.h"

#include <QObject>
#include <QQmlParserStatus>
#include <QUrl>
#include <QVariant>
#include <QtQmlIntegration>

#include <optional>

namespace tidewick
{

/// What a card shows of its record, as texts. All that comes from other processes is plain text.
class CardFacts : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    /// The list model's record.
    Q_PROPERTY(QVariant record READ record WRITE setRecord NOTIFY recordChanged)
    /// As the socket list printed it, and as it is shown.
    Q_PROPERTY(QString pid READ pid NOTIFY recordChanged)
    Q_PROPERTY(QString pidFigure READ pidFigure NOTIFY recordChanged)
    Q_PROPERTY(QString port READ port NOTIFY recordChanged)
    Q_PROPERTY(QString title READ title NOTIFY recordChanged)
    Q_PROPERTY(bool isLive READ isLive NOTIFY recordChanged)
    Q_PROPERTY(QString framework READ framework NOTIFY recordChanged)
    /// Empty texts are figures that are not shown.
    Q_PROPERTY(QString memory READ memory NOTIFY recordChanged)
    Q_PROPERTY(QString memoryFigure READ memoryFigure NOTIFY recordChanged)
    Q_PROPERTY(tidewick::CardFacts::Level memoryLevel READ memoryLevel NOTIFY recordChanged)
    Q_PROPERTY(QString cpuFigure READ cpuFigure NOTIFY recordChanged)
    Q_PROPERTY(tidewick::CardFacts::Level cpuLevel READ cpuLevel NOTIFY recordChanged)
    Q_PROPERTY(QString uptime READ uptime NOTIFY recordChanged)
    Q_PROPERTY(QString script READ script NOTIFY recordChanged)
    Q_PROPERTY(QString directoryName READ directoryName NOTIFY recordChanged)
    Q_PROPERTY(QString workingDirectory READ workingDirectory NOTIFY recordChanged)
    /// The summary as one sentence, for a screen reader.
    Q_PROPERTY(QString sentence READ sentence NOTIFY recordChanged)

public:
    enum Level { Normal, Raised, High };
    Q_ENUM(Level)

    using QObject::QObject;

    QVariant record() const { return m_variant; }
    void setRecord(const QVariant &record);

    QString pid() const { return m_record.pid(); }
    QString pidFigure() const;
    QString port() const { return QString::number(m_record.port()); }
    QString title() const;
    bool isLive() const { return m_record.isHttpAccessible; }
    QString framework() const;
    QString memory() const;
    QString memoryFigure() const;
    Level memoryLevel() const;
    QString cpuFigure() const;
    Level cpuLevel() const;
    QString uptime() const;
    QString script() const;
    QString directoryName() const;
    QString sentence() const;
    QString workingDirectory() const { return m_record.workingDirectory; }

Q_SIGNALS:
    void recordChanged();

private:
    QVariant m_variant;
    PortInfo m_record{0, {}, {}, {}, {}};
};

} // namespace tidewick
