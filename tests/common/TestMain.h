#pragma once

#include <QObject>

#include <functional>

// Test classes register themselves here; one executable per folder runs the
// class named on its command line, or all of them.
namespace TestClasses
{
using Factory = std::function<QObject*()>;
int add(const char* name, Factory factory);
} // namespace TestClasses

#define CALVEX_TEST(Class)                                                                                             \
    static const int Class##_registered = TestClasses::add(#Class, [] { return static_cast<QObject*>(new Class); });
