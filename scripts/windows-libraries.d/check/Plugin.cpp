// A DLL as the plug-in is one: a library and a C++ exception inside, one C function to the outside.
#include <qpdf/QPDF.hh>

extern "C" __declspec(dllexport) int PlugInCheck()
{
    try {
        QPDF pdf;
        pdf.setSuppressWarnings(true);
        pdf.processMemoryFile("no document", "no document", 11);
        return 0;
    } catch (const std::exception&) {
        return 1;
    }
}
