#pragma once

#include <QString>

#include <array>

/// Tells which help documents are installed beside the application, and opens them. GUI thread only.
///
/// The documents are looked up once, on first use: one installed later is found by the next start of the program.
class CHelpHelper {
public:
    enum HelpType : int {
        HelpType_ApplicationHelp = 0, ///< never available
        HelpType_CppProgGuide = 1,
        HelpType_CProgGuide = 2,
        HelpType_NetProgGuide = 3,
        HelpType_CNetProgGuide = 4,
        HelpType_BconProgGuide = 5,
        HelpType_DeployGuide = 6,
        HelpType_Max = 7
    };

    /// Looks the documents up; the other operations do this themselves.
    static void init();
    /// Whether the document exists. False for an unknown type.
    static bool isHelpAvailable(HelpType type);
    /// Absolute path of the document; empty when it does not exist and for an unknown type.
    static QString getHelpPath(HelpType type);
    /// Always empty: there is no single help file.
    static QString GetHelpFilePath();
    /// Opens the document with the desktop's program for it. When that cannot be started, a message box asks the user
    /// to open the file. Does nothing for a document that is not available.
    static void showHelp(HelpType type);

private:
    static bool m_isInitialised;
    static std::array<QString, HelpType_Max> m_pathnames;
};
