#pragma once

#include "oxdObject.h"

#include <QByteArray>
#include <QObject>

/// Changes of the properties of scene objects, announced to modules.
class oxObjectService : public QObject {
    Q_OBJECT
public:
    /// The service; never null, never destroyed.
    static oxObjectService* the();

    /// Announces that the property name of object changed.
    void notifyPropertyChanged(const oxdObject& object, const QByteArray& name)
    {
        emit propertyChangedBS(object, name);
    }

signals:
    void propertyChangedBS(const oxdObject& object, const QByteArray& name);

private:
    oxObjectService() = default;
};
