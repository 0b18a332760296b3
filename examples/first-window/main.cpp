// SPDX-License-Identifier: Apache-2.0
#include <QtGui/QGuiApplication>
#include <QtQml/QQmlApplicationEngine>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral(ZEL_QML_IMPORT_PATH)); // where ZelPlatform was installed
    engine.load(QUrl(u"qrc:/FirstWindow/Main.qml"_s));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
