#pragma once

class Dialog;
class QDir;

/// Saves a picture of every page of `dialog` in both languages to `folder`, named after the page
/// and the language. False when one could not be written.
bool saveScreenshots(Dialog &dialog, const QDir &folder);
