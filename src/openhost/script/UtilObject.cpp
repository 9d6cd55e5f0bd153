// "util": dates and numbers as texts, and dates from texts.

#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"

namespace openhost {

namespace {

constexpr char kUtil[] = R"JS((function () {
    var months = ["January", "February", "March", "April", "May", "June", "July", "August", "September", "October",
                  "November", "December"];
    var days = ["Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"];
    function padded(number, width) {
        var text = String(number);
        while (text.length < width) text = "0" + text;
        return text;
    }
    // The letters of a format in the order in which they are tried.
    var parts = /\\[\s\S]|m{1,4}|d{1,4}|yyyy|yy|HH?|hh?|MM?|ss?|tt?|[\s\S]/g;
    function part(letters, date) {
        var hours = date.getHours(), noon = hours < 12 ? "am" : "pm";
        switch (letters) {
        case "mmmm": return months[date.getMonth()];
        case "mmm": return months[date.getMonth()].substr(0, 3);
        case "mm": return padded(date.getMonth() + 1, 2);
        case "m": return String(date.getMonth() + 1);
        case "dddd": return days[date.getDay()];
        case "ddd": return days[date.getDay()].substr(0, 3);
        case "dd": return padded(date.getDate(), 2);
        case "d": return String(date.getDate());
        case "yyyy": return padded(date.getFullYear(), 4);
        case "yy": return padded(date.getFullYear() % 100, 2);
        case "HH": return padded(hours, 2);
        case "H": return String(hours);
        case "hh": return padded(hours % 12 || 12, 2);
        case "h": return String(hours % 12 || 12);
        case "MM": return padded(date.getMinutes(), 2);
        case "M": return String(date.getMinutes());
        case "ss": return padded(date.getSeconds(), 2);
        case "s": return String(date.getSeconds());
        case "tt": return noon;
        case "t": return noon.charAt(0);
        }
        return letters.charAt(0) === "\\" && letters.length === 2 ? letters.charAt(1) : letters;
    }
    function zone(date, last) {
        var minutes = -date.getTimezoneOffset(), size = Math.abs(minutes);
        return (minutes < 0 ? "-" : "+") + padded(Math.floor(size / 60), 2) + "'" + padded(size % 60, 2) + last;
    }
    function printd(format, date) {
        if (!(date instanceof Date) || isNaN(date.getTime())) throw new TypeError("util.printd needs a date");
        if (format === 0) return printd("\\D:yyyymmddHHMMss", date) + zone(date, "'");
        if (format === 1) return printd("yyyy.mm.dd HH:MM:ss ", date) + zone(date, "'");
        if (format === 2) return printd("m/d/yyyy h:MM:ss tt", date);
        return String(format).match(parts).map(function (letters) { return part(letters, date); }).join("");
    }

    function grouped(digits, separator) {
        var at = digits.indexOf("."), whole = at < 0 ? digits : digits.substr(0, at), rest = at < 0 ? "" : digits.substr(at + 1);
        var mark = [",", "", ".", ""][separator], point = [".", ".", ",", ","][separator];
        if (mark) whole = whole.replace(/\B(?=(\d{3})+$)/g, mark);
        return whole + (at < 0 ? "" : point + rest);
    }
    function number(value, separator, flags, width, digits, kind) {
        value = Number(value);
        var minus = value < 0, text = Math.abs(value);
        if (!isFinite(value)) {
            text = String(text);
        } else if (kind === "x") {
            text = Math.floor(value < 0 ? value + 4294967296 : value).toString(16).toUpperCase();
            minus = false;
        } else if (kind === "d") {
            text = grouped(Math.floor(text).toFixed(0), separator);
        } else {
            text = grouped(text.toFixed(Math.min(digits === undefined ? 6 : digits, 20)), separator);
        }
        var sign = minus ? "-" : flags.indexOf("+") >= 0 ? "+" : flags.indexOf(" ") >= 0 ? " " : "";
        if (kind === "x" && flags.indexOf("#") >= 0) sign = "0x";
        while (flags.indexOf("0") >= 0 && sign.length + text.length < width) text = "0" + text;
        return sign + text;
    }
    function printf(format) {
        var values = arguments, next = 1;
        return String(format).replace(/%(?:%|(?:,([0-3]))?([+ 0#]*)(\d*)(?:\.(\d+))?([dfsx]))/g,
            function (all, separator, flags, width, digits, kind) {
                if (all === "%%") return "%";
                if (next >= values.length) throw new TypeError("util.printf has too few values for its format");
                var value = values[next++];
                width = Math.min(Number(width || 0), 1000);
                if (digits !== undefined) digits = Number(digits);
                var text = kind === "s" ? String(value)
                    : number(value, separator === undefined ? 0 : Number(separator), flags, width, digits, kind);
                if (kind === "s" && digits !== undefined) text = text.substr(0, digits);
                while (text.length < width) text = " " + text;
                return text;
            });
    }

    function named(names, text) {
        for (var at = 0; at < names.length; ++at) {
            var full = names[at].toLowerCase();
            if (text.indexOf(full) === 0) return { value: at, length: full.length };
        }
        for (at = 0; at < names.length; ++at)
            if (text.indexOf(names[at].substr(0, 3).toLowerCase()) === 0) return { value: at, length: 3 };
        return null;
    }
    function scand(format, text) {
        if (format === 0) format = "\\D:yyyymmddHHMMss";
        if (format === 1) format = "yyyy.mm.dd HH:MM:ss";
        if (format === 2) format = "m/d/yyyy h:MM:ss tt";
        var now = new Date(), rest = String(text), noon = "";
        var found = { y: now.getFullYear(), m: now.getMonth(), d: undefined, H: 0, M: 0, s: 0 };
        var letters = String(format).match(parts) || [];
        for (var at = 0; at < letters.length; ++at) {
            var one = letters[at], name, digits;
            if (/^(mmmm?|dddd?)$/.test(one)) {
                name = named(one.charAt(0) === "m" ? months : days, rest.toLowerCase());
                if (!name) return null;
                if (one.charAt(0) === "m") found.m = name.value;
                rest = rest.substr(name.length);
            } else if (/^tt?$/.test(one)) {
                name = /^([ap])(m?)/i.exec(rest);
                if (!name || (one === "tt" && !name[2])) return null;
                noon = name[1].toLowerCase();
                rest = rest.substr(one.length);
            } else if (/^(mm?|dd?|yy|yyyy|HH?|hh?|MM?|ss?)$/.test(one)) {
                var packed = at + 1 < letters.length && /^[mdyHhMs]/.test(letters[at + 1]);
                digits = new RegExp("^\\d{1," + (one === "yyyy" ? 4 : 2) + "}").exec(rest);
                if (!digits || (packed && digits[0].length < one.length)) return null;
                rest = rest.substr(digits[0].length);
                var value = Number(digits[0]);
                if (one.charAt(0) === "y" && digits[0].length <= 2) value += value < 50 ? 2000 : 1900;
                found[one.charAt(0) === "h" ? "H" : one.charAt(0)] = one.charAt(0) === "m" ? value - 1 : value;
            } else {
                if (one.length === 2) one = one.charAt(1);
                if (rest.charAt(0) !== one) return null;
                rest = rest.substr(1);
            }
        }
        if (rest !== "" && !(format === "\\D:yyyymmddHHMMss" || format === "yyyy.mm.dd HH:MM:ss")) return null;
        if (noon && (found.H < 1 || found.H > 12)) return null;
        if (noon) found.H = found.H % 12 + (noon === "p" ? 12 : 0);
        if (found.d === undefined) found.d = /d/.test(String(format)) || /[my]/.test(String(format)) ? 1 : now.getDate();
        var date = new Date(found.y, found.m, found.d, found.H, found.M, found.s);
        if (found.y < 100) date.setFullYear(found.y);
        var same = date.getMonth() === found.m && date.getDate() === found.d && date.getHours() === found.H &&
            date.getMinutes() === found.M && date.getSeconds() === found.s;
        return same ? date : null;
    }
    return { printd: printd, printf: printf, scand: scand };
})())JS";

}  // namespace

void AddUtil(duk_context* context)
{
    RunOwnScript(context, kUtil);
    FixScriptGlobal(context, "util");
}

}  // namespace openhost
