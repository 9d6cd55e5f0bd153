// The objects that a script finds. An object is a file with a function that adds it, and a line here.
#pragma once

struct duk_hthread;

#define SCRIPT_OBJECTS(OBJECT) \
    OBJECT(Document)           \
    OBJECT(Info)               \
    OBJECT(PageMembers)        \
    OBJECT(WordMembers)        \
    OBJECT(ViewMembers)        \
    OBJECT(CommentMembers)     \
    OBJECT(UnsupportedMembers) \
    OBJECT(App)                \
    OBJECT(Console)            \
    OBJECT(Util)               \
    OBJECT(Color)              \
    OBJECT(Event)              \
    OBJECT(Global)

namespace openhost {

// Each adds its object to the global object, which is the document: "this" of a script. They leave the stack as it
// was.
#define DECLARE_OBJECT(name) void Add##name(duk_hthread* context);
SCRIPT_OBJECTS(DECLARE_OBJECT)
#undef DECLARE_OBJECT

}  // namespace openhost
