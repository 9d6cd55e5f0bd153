"""A very small JPEG encoder: a picture of flat squares, eight by eight pixels each, in full colour."""
import struct

# Length classes of the differences between neighbouring squares: four bits each, so class n has the code n.
CLASSES = list(range(12))
QUANTUM = 8  # a flat square's coefficient is eight times its level, so dividing by eight loses nothing


def segment(marker, body):
    return bytes([0xFF, marker]) + struct.pack(">H", len(body) + 2) + body


def huffman_table(kind, lengths, symbols):
    return segment(0xC4, bytes([kind]) + bytes(lengths) + bytes(symbols))


class BitWriter:
    def __init__(self):
        self.value, self.count, self.data = 0, 0, bytearray()

    def put(self, value, count):
        self.value, self.count = (self.value << count) | value, self.count + count
        while self.count >= 8:
            byte = (self.value >> (self.count - 8)) & 0xFF
            self.data += b"\xFF\x00" if byte == 0xFF else bytes([byte])
            self.count -= 8
        self.value &= (1 << self.count) - 1

    def finish(self):
        if self.count:
            self.put((1 << (8 - self.count)) - 1, 8 - self.count)
        return bytes(self.data)


def levels(colour):
    red, green, blue = colour
    luma = 0.299 * red + 0.587 * green + 0.114 * blue
    return [round(luma - 128), round((blue - luma) * 0.564), round((red - luma) * 0.713)]


def encode(squares):
    """squares: rows of (red, green, blue), 0 to 255; answers the file's bytes."""
    height, width = len(squares) * 8, len(squares[0]) * 8
    bits, before = BitWriter(), [0, 0, 0]
    for row in squares:
        for colour in row:
            for channel, level in enumerate(levels(colour)):
                difference, before[channel] = level - before[channel], level
                size = abs(difference).bit_length()
                bits.put(size, 4)
                if size:
                    bits.put(difference if difference > 0 else difference + (1 << size) - 1, size)
                bits.put(0, 1)  # nothing but the flat part
    frame = struct.pack(">BHHB", 8, height, width, 3) + bytes([1, 0x11, 0, 2, 0x11, 0, 3, 0x11, 0])
    return (b"\xFF\xD8" + segment(0xE0, b"JFIF\0" + struct.pack(">BBBHHBB", 1, 1, 1, 96, 96, 0, 0)) +
            segment(0xDB, bytes([0]) + bytes([QUANTUM] * 64)) + segment(0xC0, frame) +
            huffman_table(0x00, [0, 0, 0, len(CLASSES)] + [0] * 12, CLASSES) +
            huffman_table(0x10, [1] + [0] * 15, [0]) +
            segment(0xDA, bytes([3, 1, 0, 2, 0, 3, 0, 0, 63, 0])) + bits.finish() + b"\xFF\xD9")
