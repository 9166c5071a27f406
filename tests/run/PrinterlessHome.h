#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

// A machine without any printer, and a home folder of the test's own: no
// print server answers (CUPS_SERVER names a loopback port nothing listens on,
// PRINTER and LPDEST are unset), and HOME and XDG_CONFIG_HOME point into a
// temporary folder. Made before the first look at the printers, which asks
// the server once. Everything is put back as it was when the object goes.
class PrinterlessHome
{
public:
    PrinterlessHome()
        : m_port(unusedLoopbackPort())
        , m_cupsServer(qgetenv("CUPS_SERVER"))
        , m_hadCupsServer(qEnvironmentVariableIsSet("CUPS_SERVER"))
        , m_printer(qgetenv("PRINTER"))
        , m_hadPrinter(qEnvironmentVariableIsSet("PRINTER"))
        , m_lpDest(qgetenv("LPDEST"))
        , m_hadLpDest(qEnvironmentVariableIsSet("LPDEST"))
        , m_home(qgetenv("HOME"))
        , m_hadHome(qEnvironmentVariableIsSet("HOME"))
        , m_configHome(qgetenv("XDG_CONFIG_HOME"))
        , m_hadConfigHome(qEnvironmentVariableIsSet("XDG_CONFIG_HOME"))
    {
        qputenv("CUPS_SERVER", "127.0.0.1:" + QByteArray::number(m_port));
        qunsetenv("PRINTER");
        qunsetenv("LPDEST");
        qputenv("HOME", QFile::encodeName(m_folder.path()));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder.filePath(QStringLiteral(".config"))));
    }

    ~PrinterlessHome()
    {
        restore("CUPS_SERVER", m_hadCupsServer, m_cupsServer);
        restore("PRINTER", m_hadPrinter, m_printer);
        restore("LPDEST", m_hadLpDest, m_lpDest);
        restore("HOME", m_hadHome, m_home);
        restore("XDG_CONFIG_HOME", m_hadConfigHome, m_configHome);
    }

    PrinterlessHome(const PrinterlessHome&) = delete;
    PrinterlessHome& operator=(const PrinterlessHome&) = delete;

    // The home folder could be made.
    bool isValid() const { return m_folder.isValid(); }
    // The loopback port CUPS_SERVER names (0 when the system handed out none).
    int port() const { return m_port; }
    QString path() const { return m_folder.path(); }
    QString filePath(const QString& name) const { return m_folder.filePath(name); }

private:
    // A loopback port nothing listens on: one the system hands out, then frees.
    static int unusedLoopbackPort()
    {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = 0;
        socklen_t length = sizeof address;
        int port = 0;
        if (fd >= 0 && ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
            ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0)
            port = ntohs(address.sin_port);
        if (fd >= 0)
            ::close(fd);
        return port;
    }

    static void restore(const char* name, bool wasSet, const QByteArray& value)
    {
        if (wasSet)
            qputenv(name, value);
        else
            qunsetenv(name);
    }

    QTemporaryDir m_folder;
    int m_port;
    QByteArray m_cupsServer;
    bool m_hadCupsServer;
    QByteArray m_printer;
    bool m_hadPrinter;
    QByteArray m_lpDest;
    bool m_hadLpDest;
    QByteArray m_home;
    bool m_hadHome;
    QByteArray m_configHome;
    bool m_hadConfigHome;
};
