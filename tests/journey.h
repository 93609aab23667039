#pragma once

#include "consoleapp.h"
#include "sitefixture.h"
#include "trainer/operator.h"
#include "trainer/plantprocess.h"
#include "trainer/sitefolder.h"

#include <QApplication>
#include <QtTest>

// One life of the whole console on a simulated installation of its own, driven by the operator's hand.
// `run` may be called more than once: each call is a new start of the console on the same site.
class Journey
{
public:
    // `air`: the installation starts with the vacuum plant off and the door open, not pumped down.
    explicit Journey(double speed = 20, bool firstDay = true, bool air = false)
        : m_plant({PlantProcess::besideThisProgram(), m_site.root(), speed, QString(), site().shmSuffix, air})
    {
        laySiteFolder(m_site.root(), firstDay);
        QString why;
        m_started = m_plant.start(&why);
        m_why = why;
        Site own = site();
        m_plant.setEndpoints(&own);
        setSite(own);
    }

    // Runs the console from the lock to the end of the event loop, and the script beside it. Returns what
    // went wrong, empty for nothing.
    QString run(const std::function<void()>& script)
    {
        if (!m_started)
            return m_why;
        return runScript([this] { m_exitCode = runConsole(); }, script);
    }

    // The same with the login as «su» before the script.
    QString runLoggedIn(const std::function<void()>& script)
    {
        return run([&] {
            hand.logIn();
            script();
        });
    }

    QByteArray program(int channel) const
    {
        return m_site.read(QStringLiteral("/programs/_temp%1.npg").arg(channel));
    }

    // All lines of the journal files of this site, in order of their names.
    QString journal() const
    {
        QString all;
        QDir log(site().path("/log"));
        for (const QString& day : log.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
            const QDir folder(log.filePath(day));
            for (const QString& file : folder.entryList(QDir::Files, QDir::Name))
                all += QString::fromUtf8(m_site.read("/log/" + day + "/" + file));
        }
        return all;
    }

    int exitCode() const { return m_exitCode; }
    SiteFixture& files() { return m_site; }
    PlantProcess& plant() { return m_plant; }

    Operator hand;

private:
    SiteFixture m_site;
    PlantProcess m_plant;
    bool m_started = false;
    QString m_why;
    int m_exitCode = -2;
};
