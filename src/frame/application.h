#pragma once

#include "twbconsole_export.h"

#include <QApplication>
#include <QString>
#include <QUrl>

namespace TWB::GUI {

/// The console's application object. The host makes exactly one; the library reads the
/// product's identity and edition through its static members.
class TWBCONSOLE_EXPORT Application : public QApplication
{
    Q_OBJECT
    Q_DISABLE_COPY(Application)
public:
    Application(int& argc, char** argv, int flags = ApplicationFlags);

    /// Starts a new console and quits this one.
    static void restart();
    /// Reads the edition and the support address again on their next use.
    static void rereadConfiguration();
    static bool isStandalon();
    /// True in the managed edition.
    static bool isFbs();
    static QString applicationName();
    static QString companyName();
    static QString copyright();
    static QString website();
    static QString buildVersion();
    static QString getSharePath();
    static QString getImagesPath();
    static QString supportEmail();
    /// The address the product's licence was registered to; empty when none is known.
    static QString licenseMail();
    /// Opens a URL with a clean library and program search path, so that the system's
    /// browser or file manager does not pick up the console's own libraries.
    static void openURL(const QUrl& url);
};

} // namespace TWB::GUI
