"""A small writer of PDF files: numbered objects, plain streams, a classic cross-reference table.

Nothing in a file depends on the clock, on chance or on compression, so the same calls always give the same bytes.
"""
import hashlib

PAGE_WIDTH, PAGE_HEIGHT, MARGIN = 595, 842, 72  # points
STAMP = "D:20240229120000Z"


def literal(text):
    """A text string: plain ASCII in brackets, everything else as UTF-16 with its mark."""
    if text.isascii():
        return "(" + text.replace("\\", "\\\\").replace("(", "\\(").replace(")", "\\)") + ")"
    return "<FEFF" + text.encode("utf-16-be").hex().upper() + ">"


def show(encoded):
    """The operand of a text-showing operator, as hexadecimal."""
    return f"<{encoded.hex().upper()}>"


class PdfFile:
    def __init__(self, title, author="Ferrule samples", **info):
        self.objects = []
        self.pages = []
        self.catalog_entries = []
        self.page_tree = self.reserve()
        self.info = self.add("<< " + " ".join(f"/{key} {literal(value)}" for key, value in (
            ("Title", title), ("Author", author), ("Producer", "make-samples"), ("CreationDate", STAMP), *info.items())) + " >>")

    def reserve(self):
        self.objects.append(b"")
        return len(self.objects)

    def put(self, number, body):
        self.objects[number - 1] = body if isinstance(body, bytes) else body.encode("ascii")

    def add(self, body):
        number = self.reserve()
        self.put(number, body)
        return number

    def stream(self, data, entries=""):
        data = data if isinstance(data, bytes) else data.encode("ascii")
        return self.add(f"<< {entries} /Length {len(data)} >>\nstream\n".encode("ascii") + data + b"\nendstream")

    def page(self, content, fonts, entries="", size=(PAGE_WIDTH, PAGE_HEIGHT)):
        resources = " ".join(f"/{name} {number} 0 R" for name, number in fonts.items())
        self.pages.append(self.add(f"<< /Type /Page /Parent {self.page_tree} 0 R /MediaBox [0 0 {size[0]} {size[1]}] "
                                   f"/Resources << /Font << {resources} >> >> /Contents {self.stream(content)} 0 R {entries} >>"))
        return self.pages[-1]

    def bytes(self):
        kids = " ".join(f"{page} 0 R" for page in self.pages)
        self.put(self.page_tree, f"<< /Type /Pages /Count {len(self.pages)} /Kids [{kids}] >>")
        root = self.add(f"<< /Type /Catalog /Pages {self.page_tree} 0 R " + " ".join(self.catalog_entries) + " >>")
        out, offsets = bytearray(b"%PDF-1.7\n%\xe2\xe3\xcf\xd3\n"), []
        for number, body in enumerate(self.objects, start=1):
            offsets.append(len(out))
            out += f"{number} 0 obj\n".encode("ascii") + body + b"\nendobj\n"
        identity = hashlib.md5(out).hexdigest().upper()
        table = len(out)
        out += f"xref\n0 {len(offsets) + 1}\n0000000000 65535 f \n".encode("ascii")
        out += b"".join(b"%010d 00000 n \n" % offset for offset in offsets)
        out += (f"trailer\n<< /Size {len(offsets) + 1} /Root {root} 0 R /Info {self.info} 0 R "
                f"/ID [<{identity}> <{identity}>] >>\nstartxref\n{table}\n%%EOF\n").encode("ascii")
        return bytes(out)


def text_lines(lines, encode=lambda line: line.encode("cp1252"), size=12, top=PAGE_HEIGHT - MARGIN, font="F1"):
    """Content that shows each line below the one before it."""
    body = "".join(f"{show(encode(line))} Tj T*\n" for line in lines)
    return f"BT\n/{font} {size} Tf\n{round(size * 1.4, 2)} TL\n{MARGIN} {top} Td\n{body}ET\n"


def latin_font(pdf, name="Helvetica"):
    return pdf.add(f"<< /Type /Font /Subtype /Type1 /BaseFont /{name} /Encoding /WinAnsiEncoding >>")


def renamed_glyph_font(pdf, glyphs):
    """Courier with other letters on the codes from 128: glyphs maps each letter to its glyph name.

    Every letter is 600 wide, said so in the font, because readers have no widths for letters outside the standard ones.
    Answers the font and the function that encodes a line for it."""
    names = " ".join("/" + name for name in glyphs.values())
    codes = {letter: 128 + index for index, letter in enumerate(glyphs)}
    unicode_map = to_unicode(pdf, {code: letter for letter, code in codes.items()} | {c: chr(c) for c in range(32, 127)})
    descriptor = pdf.add("<< /Type /FontDescriptor /FontName /Courier /Flags 33 /FontBBox [-23 -250 715 805] /ItalicAngle 0 "
                         "/Ascent 629 /Descent -157 /CapHeight 562 /StemV 51 /MissingWidth 600 >>")
    last = 127 + len(glyphs)
    widths = " ".join(["600"] * (last - 31))
    font = pdf.add(f"<< /Type /Font /Subtype /Type1 /BaseFont /Courier /FontDescriptor {descriptor} 0 R /FirstChar 32 "
                   f"/LastChar {last} /Widths [{widths}] /ToUnicode {unicode_map} 0 R "
                   f"/Encoding << /Type /Encoding /BaseEncoding /WinAnsiEncoding /Differences [128 {names}] >> >>")
    return font, lambda line: bytes(codes.get(letter, ord(letter) & 0xFF) for letter in line)


def drawn_font(pdf, drawings):
    """A font whose glyphs are strokes on a grid of 1000: drawings maps each letter to its path operators."""
    letters = list(drawings)
    codes = {letter: 65 + index for index, letter in enumerate(letters)}
    procedures = " ".join(f"/g{index} {pdf.stream(f'1000 0 d0 70 w {drawings[letter]} S')} 0 R"
                          for index, letter in enumerate(letters))
    names = " ".join(f"/g{index}" for index in range(len(letters)))
    widths = " ".join("1000" for _ in letters)
    unicode_map = to_unicode(pdf, {code: letter for letter, code in codes.items()})
    font = pdf.add(f"<< /Type /Font /Subtype /Type3 /FontBBox [0 -100 1000 1000] /FontMatrix [0.001 0 0 0.001 0 0] "
                   f"/FirstChar 65 /LastChar {64 + len(letters)} /Widths [{widths}] /Resources << >> "
                   f"/CharProcs << {procedures} >> /Encoding << /Type /Encoding /Differences [65 {names}] >> "
                   f"/ToUnicode {unicode_map} 0 R >>")
    return font, lambda line: bytes(codes[letter] for letter in line)


def to_unicode(pdf, letters):
    """The table that says which letter a one-byte code means."""
    rows = [f"<{code:02X}> <{letter.encode('utf-16-be').hex().upper()}>" for code, letter in sorted(letters.items())]
    blocks = "".join(f"{len(part)} beginbfchar\n" + "\n".join(part) + "\nendbfchar\n"
                     for part in (rows[start:start + 100] for start in range(0, len(rows), 100)))
    return pdf.stream("/CIDInit /ProcSet findresource begin 12 dict begin begincmap\n"
                      "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def\n"
                      "/CMapName /Adobe-Identity-UCS def /CMapType 2 def\n"
                      "1 begincodespacerange <00> <FF> endcodespacerange\n" + blocks +
                      "endcmap CMapName currentdict /CMap defineresource pop end end")
