// The smallest program that shows the window: what the toolkit itself costs.
//
//   smallest-window FILE

#include <QApplication>
#include <QFile>
#include <QUiLoader>
#include <QWidget>
#include <memory>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QFile file(QApplication::arguments().at(1));
    if (!file.open(QIODevice::ReadOnly))
        return EXIT_FAILURE;
    const std::unique_ptr<QWidget> window(QUiLoader().load(&file));
    window->show();
    return QApplication::exec();
}
