"""Writers of the text map's dialects."""
from shapes import dot, normal_of

# Axis of a face's main direction, and the texture directions that go with it.
BASE_AXES = [
    ((0, 0, 1), (1, 0, 0), (0, -1, 0)),
    ((0, 0, -1), (1, 0, 0), (0, -1, 0)),
    ((1, 0, 0), (0, 1, 0), (0, 0, -1)),
    ((-1, 0, 0), (0, 1, 0), (0, 0, -1)),
    ((0, 1, 0), (1, 0, 0), (0, 0, -1)),
    ((0, -1, 0), (1, 0, 0), (0, 0, -1)),
]


def base_axes(normal):
    best, found = 0, BASE_AXES[0]
    for row in BASE_AXES:
        value = dot(row[0], normal)
        if value > best:
            best, found = value, row
    return found[1], found[2]


def number(value):
    return str(int(value)) if float(value).is_integer() else f"{value:.6f}"


def numbers(values):
    return " ".join(number(v) for v in values)


def binary(value):
    return format(value, "08b")


def face_tail_50(face):
    return f" : {binary(face.flags)} 0 50 0" if face.flags & 15 else ""


def block_50(block):
    lines = ["{", f"{{ {binary(block.flags)} }}"]
    for face in block.faces:
        ring = [block.points[i] for i in face.ring]
        points = " ".join(f"( {numbers(p)} )" for p in ring[:3])
        lines.append(f"{points} {face.texture} 0 0 0 1 1{face_tail_50(face)}")
    return lines + ["}"]


def mapping(block, face):
    ring = [block.points[i] for i in face.ring]
    s, t = face.axes or base_axes(normal_of(ring))
    return f"( {numbers(s)} 0 ) ( {numbers(t)} 0 )"


def block_vertices(block, tail):
    lines = ["{", f"vertices {len(block.points)}", f"faces {len(block.faces)}"]
    lines += [numbers(p) for p in block.points]
    lines.append(f"{{ {binary(block.flags)} {block.material} }}")
    for face in block.faces:
        ring = f"{len(face.ring)} {numbers(face.ring)}"
        lines.append(f"{ring} : {face.texture} {mapping(block, face)} : {binary(face.flags)} 0 50 {tail}")
    return lines + ["}"]


def entity_lines(entity, dialect):
    """5.0 knows no extended models (type 7): they are written as plain ones, with the first eight skills."""
    if dialect != "50" or not entity[0].startswith("7 "): return entity
    head, *common, skills, flags = entity[:8]
    return ["3" + head[1:], *common, " ".join(skills.split()[:8]), flags]


def write(level, dialect):
    head = {"50": [], "51": ["version 511"], "71": ["version 711"]}[dialect]
    lines = head + ["{", f"0 {level.wad}", level.palette]
    for block in level.blocks:
        if dialect == "50":
            lines += block_50(block)
        else:
            lines += block_vertices(block, "ndef" if dialect == "71" else "0")
    lines.append("}")
    for entity in level.entities:
        lines += ["{", *entity_lines(entity, dialect), "}"]
    return "\n".join(lines) + "\n"
