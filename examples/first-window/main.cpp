// SPDX-License-Identifier: Apache-2.0
#include <QtGui/QGuiApplication>
#include <QtQml/QQmlApplicationEngine>

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral(ZEL_QML_IMPORT_PATH)); // where ZelPlatform was installed
    engine.load(QUrl(QStringLiteral("qrc:/FirstWindow/Main.qml")));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
