#pragma once

#include "oxKernelServiceFactory.h"

#include <QObject>
#include <QString>

/// Announces confirmed preference changes. Registered with the kernel service factory.
class oxPreferencesService : public QObject, public oxBaseService {
    Q_OBJECT
public:
    static oxPreferencesService* the();

signals:
    /// The keys of page were confirmed and may have changed.
    void preferencesChanged(const QString& page);

private:
    oxPreferencesService() = default;
};
