#pragma once

#include "platform/RuntimeError.h"

#include <QHash>
#include <QString>

#include <functional>
#include <memory>

// Base of every component the program creates by class identity.
class Component
{
public:
    virtual ~Component() = default;
};

// Creates components by their class identity ("NorrixStringServer.NorrixStrings",
// "NorrixExCalcLib.NorrixExCalc.1", ...), the way the suite's components are
// created on Windows. The composition root registers the real classes; tests
// register fakes under the same identities.
class ComponentFactory
{
public:
    using Creator = std::function<std::unique_ptr<Component>()>;

    static void registerClass(const QString& classId, Creator creator);
    static void unregisterClass(const QString& classId);
    static bool isRegistered(const QString& classId);

    // Throws RuntimeError 429 when nothing is registered under classId or the
    // registered class does not offer interface T.
    template <class T> static std::unique_ptr<T> create(const QString& classId)
    {
        std::unique_ptr<Component> object = createComponent(classId);
        T* typed = dynamic_cast<T*>(object.get());
        if (!typed)
            throwCannotCreate(classId);
        object.release();
        return std::unique_ptr<T>(typed);
    }

    // The creator registered for classId; an empty one when there is none.
    static Creator registeredCreator(const QString& classId);

private:
    static std::unique_ptr<Component> createComponent(const QString& classId);
    [[noreturn]] static void throwCannotCreate(const QString& classId);
};
