// cab-writer FILE: reads "type<TAB>path:to:key<TAB>value" lines and writes the collection in the host's own form.
// Sequences in that form say things that the XML form cannot.
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "openhost/core/Atoms.h"
#include "openhost/core/Host.h"
#include "openhost/values/CabStream.h"
#include "openhost/values/Cabinet.h"

namespace {

using namespace openhost;

bool Put(CCabinet& cab, const std::string& type, const std::string& key, const std::string& value)
{
    if (type == "cab") {
        if (!cab.GetCab(key)) cab.PutNewCab(key);
    } else if (type == "boolean") {
        cab.PutBool(key, value == "true");
    } else if (type == "integer") {
        cab.PutInt(key, std::stoi(value));
    } else if (type == "double") {
        cab.PutDouble(key, std::stod(value));
    } else if (type == "string") {
        cab.PutString(key, value);
    } else if (type == "text") {
        cab.PutText(key, value);
    } else if (type == "atom") {
        cab.PutAtom(key, AtomFromText(value));
    } else {
        return false;
    }
    return true;
}

}  // namespace

int main(int count, char** arguments)
{
    if (count != 2) return 2;
    const CHost host;
    const COwnedCab owner = COwnedCab::New();
    CCabinet& cab = *owner;
    std::string line;
    while (std::getline(std::cin, line)) {
        std::istringstream fields(line);
        std::string type, key, value;
        std::getline(fields, type, '\t');
        std::getline(fields, key, '\t');
        std::getline(fields, value);
        if (!Put(cab, type, key, value)) {
            std::cerr << "cab-writer: no such type: " << type << '\n';
            return 1;
        }
    }
    std::ofstream file(arguments[1], std::ios::binary);
    file << BytesOfCab(cab);
    return file.flush() ? 0 : 1;
}
