#pragma once

#include <QString>

/// Facts about the running application and its screen.
class oxPlatform {
public:
    /// The application's title with its version, as shown in message boxes.
    static QString getAppVersionName();
    /// The version number alone, e.g. "15.3".
    static QString getVersion();

    /// Icon sizes in device-independent pixels, scaled for the screen.
    static int getSmallIconSizeX();
    static int getSmallIconSizeY();
    static int getMediumIconSizeX();
    static int getMediumIconSizeY();

    /// Ratio of the screen's logical dpi to 96 (1 without a screen).
    static double getDpiScaleX();
    static double getDpiScaleY();

    /// Gives the process a private runtime folder when the environment names none, as
    /// headless runs often don't; call it before the application object is made.
    static void ensureRuntimeDir();

    /// Sets up a run without a screen (headless oxlin, tests, benchmarks, screenshots): the
    /// offscreen Qt platform (an already chosen platform is kept when keepPlatform is true), a
    /// runtime folder, and no modal dialog waiting for a person. Call it before the application
    /// object is made.
    static void prepareHeadless(bool keepPlatform = false);
};
