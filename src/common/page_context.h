#pragma once

class FileDialogs;
class Notices;
class ToolSettings;

/// What every page of the window may use. `Dialog` owns it, and outlives the pages.
struct PageContext
{
    Notices &notices;
    FileDialogs &fileDialogs;
    ToolSettings &settings;
    const bool &isEnglish; ///< the language of the window at this moment
};
