// "color": colours as arrays, a space and its components from 0 to 1.

#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"

namespace openhost {

namespace {

constexpr char kColor[] = R"JS((function () {
    var counts = { T: 0, G: 1, RGB: 3, CMYK: 4 };
    function checked(one) {
        if (!Array.isArray(one) || !counts.hasOwnProperty(one[0]) || one.length !== counts[one[0]] + 1)
            throw new TypeError("a colour is an array such as [\"RGB\", 1, 0, 0]");
        return one;
    }
    function rgb(one) {
        switch (one[0]) {
        case "G": return [one[1], one[1], one[1]];
        case "RGB": return one.slice(1);
        default: return [1, 2, 3].map(function (at) { return 1 - Math.min(1, one[at] + one[4]); });
        }
    }
    function convert(one, space) {
        checked(one);
        if (!counts.hasOwnProperty(space)) throw new TypeError("there is no colour space " + space);
        if (one[0] === space) return one.slice();
        if (space === "T" || one[0] === "T") return ["T"];
        var parts = rgb(one);
        if (space === "RGB") return ["RGB"].concat(parts);
        if (space === "G") return ["G", 0.3 * parts[0] + 0.59 * parts[1] + 0.11 * parts[2]];
        var black = Math.min(1 - parts[0], 1 - parts[1], 1 - parts[2]);
        return ["CMYK", 1 - parts[0] - black, 1 - parts[1] - black, 1 - parts[2] - black, black];
    }
    function equal(one, other) {
        checked(one);
        checked(other);
        if (one[0] === "T" || other[0] === "T") return one[0] === other[0];
        if (one[0] === "G" && other[0] !== "G") one = convert(one, other[0]);
        else other = convert(other, one[0]);
        return one.every(function (part, at) { return at === 0 || Math.abs(part - other[at]) < 1e-6; });
    }
    return {
        transparent: ["T"], black: ["G", 0], white: ["G", 1], red: ["RGB", 1, 0, 0], green: ["RGB", 0, 1, 0],
        blue: ["RGB", 0, 0, 1], cyan: ["CMYK", 1, 0, 0, 0], magenta: ["CMYK", 0, 1, 0, 0],
        yellow: ["CMYK", 0, 0, 1, 0], dkGray: ["G", 0.25], gray: ["G", 0.5], ltGray: ["G", 0.75],
        convert: convert, equal: equal
    };
})())JS";

}  // namespace

void AddColor(duk_context* context)
{
    RunOwnScript(context, kColor);
    FixScriptGlobal(context, "color");
}

}  // namespace openhost
