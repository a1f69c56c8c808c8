#include <gtest/gtest.h>

#include <QApplication>
#include <QTemporaryDir>

#include <clocale>
#include <iostream>

namespace {

/// The offscreen platform says at each window what it has no use for.
void printMessage(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message) {
    if (!message.startsWith(QLatin1String("This plugin does not support"))) {
        std::cerr << message.toStdString() << std::endl;
    }
}

} // namespace

// Nothing of the machine's own shows in the tests: no display, no desktop's settings, no region.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
    qputenv("XDG_RUNTIME_DIR", settings.path().toLocal8Bit());
    qputenv("LC_ALL", "C.UTF-8");
    qunsetenv("QT_SCALE_FACTOR");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    qInstallMessageHandler(printMessage);
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    return RUN_ALL_TESTS();
}
