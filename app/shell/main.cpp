#include "app/look/Theme.h"
#include "app/shell/Application.h"
#include "app/shell/HeadStart.h"
#include "app/shell/Program.h"
#include "app/shell/StartOptions.h"
#include "base/Product.h"

#include <algorithm>
#include <iostream>

int main(int count, char** words) {
    using namespace tesserine;

    // These need no display.
    const auto asked = app::StartOptions::read({words + std::min(count, 1), words + count});
    if (asked.wantsHelp) {
        std::cout << app::StartOptions::help().toStdString();
        return 0;
    }
    if (asked.wantsVersion) {
        std::cout << "Tesserine " << product::version << '\n';
        return 0;
    }
    app::Application application(count, words);
    QApplication::setApplicationName("Tesserine");
    QApplication::setApplicationVersion(TESSERINE_VERSION);
    QApplication::setDesktopFileName("app.tesserine.Tesserine");

    const auto options = app::StartOptions::read(QApplication::arguments().mid(1));
    if (!options.mistake.isEmpty()) {
        std::cerr << options.mistake.toStdString() << '\n'
                  << app::StartOptions::help().toStdString();
        return 2;
    }
    const app::HeadStart headStart;
    app::Theme theme(application);
    theme.setScheme(options.scheme);
    app::Program program(theme, options);
    QObject::connect(&application, &app::Application::failed, &program, &app::Program::tellFailure);
    return program.run();
}
