#pragma once

#include <QCoreApplication>
#include <QObject>
#include <QPointer>

namespace TWL::Cloud::Detail {

/// The one object of its kind for the application's life: made by `make` on first use, deleted once the
/// application quits, and not made again after that.
template <class T, class Make> QPointer<T> applicationInstance(Make make)
{
    static QPointer<T> instance;
    static bool quit = false;
    if (!instance && !quit) {
        instance = make();
        if (QCoreApplication::instance()) {
            QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, instance.data(), [] {
                quit = true;
                if (instance)
                    instance->deleteLater();
            });
        }
    }
    return instance;
}

} // namespace TWL::Cloud::Detail
