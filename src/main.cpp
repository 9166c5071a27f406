// Calvex QC Reports: the composition root. It is the one place that knows
// the suite's implementation; everything else reaches the suite through the
// component factory.
#include <QApplication>
#include <QWidget>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Calvex QC Reports"));
    QApplication::setApplicationVersion(QStringLiteral("%1.%2.%3")
                                            .arg(CALVEX_VERSION_MAJOR)
                                            .arg(CALVEX_VERSION_MINOR)
                                            .arg(CALVEX_VERSION_PATCH));

    QWidget window;
    window.setObjectName(QStringLiteral("frmMain"));
    window.setWindowTitle(QApplication::applicationName());
    window.resize(900, 640);
    window.show();
    return app.exec();
}
