"""Writes settings files as the programs do, and reads nothing back."""
import json


def settings_file(path, values):
    """`values`: {key: value}, with dictionaries as nested records and (text,) as wide texts."""
    values = _values_of(values)
    checksum = 0xCBF29CE484222325  # FNV-1a
    for byte in json.dumps(values, separators=(",", ":"), ensure_ascii=False).encode() + b"\n":
        checksum = (checksum ^ byte) * 0x100000001B3 % 2**64
    path.write_text(json.dumps({"ferrule": "settings", "version": 2, "checksum": f"{checksum:016x}", "values": values}))
    return path


def rename_settings(path, parts, **options):
    """A .docren file whose names are made of these components."""
    return settings_file(path, {**{f"NamePart{number}": part for number, part in enumerate(parts)}, **options})


def title_part():
    return {"FileConstructionMode": 6, "CustomTextW": ("<title>",)}


def area_part(page, left, bottom, right, top):
    return {"FileConstructionMode": 4, "PageNumber": page, "PageRectLeft": float(left), "PageRectBottom": float(bottom),
            "PageRectRight": float(right), "PageRectTop": float(top)}


def _values_of(values):
    def value_of(value):
        if isinstance(value, dict):
            return {"record": _values_of(value)}
        return {"wide": value[0]} if isinstance(value, tuple) else value
    return {key: value_of(value) for key, value in values.items()}
