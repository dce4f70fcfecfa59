#pragma once

#include <QLoggingCategory>
#include <QStringList>

/// Collects what is logged while `rules` hold.
class CapturedLog
{
public:
    explicit CapturedLog(const char *rules)
    {
        lines().clear();
        QLoggingCategory::setFilterRules(QLatin1String(rules));
        m_handlerBefore = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &context, const QString &line) {
                lines() += QLatin1String(context.category) + QLatin1String(": ") + line;
            });
    }
    ~CapturedLog()
    {
        qInstallMessageHandler(m_handlerBefore);
        QLoggingCategory::setFilterRules({});
    }
    Q_DISABLE_COPY_MOVE(CapturedLog)

    static QStringList &lines()
    {
        static QStringList list;
        return list;
    }

private:
    QtMessageHandler m_handlerBefore;
};
