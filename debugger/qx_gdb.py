"""Pretty-printers of the QX classes for gdb: source this file, or let gdb load it from its auto-load folder.

Run-time-sized classes have their fields in the library: it must have been built with debug information (-g).
"""

import gdb
import gdb.printing


class Elements:
    """A title and the elements: one child each, matrices a child a row."""

    def __init__(self, value, title, pointer, rows, columns):
        self.value, self.title, self.pointer, self.rows, self.columns = value, title, pointer, rows, columns

    def to_string(self):
        return self.title

    def display_hint(self):
        return "array"

    def children(self):
        for row in range(self.rows):
            first = self.pointer + row * self.columns
            if self.rows == 1 or self.columns == 1:
                for i in range(self.columns):
                    yield "[%d]" % (row + i), (first + i).dereference()
            else:
                row_type = first.dereference().type.array(self.columns - 1)
                yield "[%d]" % row, first.cast(row_type.pointer()).dereference()


class Fixed(Elements):
    """CQXVector2, 3, 4 and CQXMatrix2, 3, 4."""

    def __init__(self, value, rows, columns):
        elements = value["m_c"]
        super().__init__(value, str(value.type.strip_typedefs().unqualified()), elements[0].address, rows, columns)


class Dynamic(Elements):
    """CQXBaseVector, CQXBaseMatrix and what is derived from them."""

    def __init__(self, value, is_matrix):
        name = str(value.type.strip_typedefs().unqualified())
        block = value["m_data"]["m_block"]
        rows = int(value["m_rows"]) if is_matrix else 1
        columns = int(value["m_columns"] if is_matrix else value["m_dimension"])
        title = "%s %dx%d" % (name, rows, columns) if is_matrix else "%s of %d" % (name, columns)
        if not block:
            rows = 0
        super().__init__(value, title, block, rows, columns)


class Complex:
    """CQXComplex: the parts, and the trigonometric form where it was calculated."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        text = "%s + %s i" % (self.value["m_real"], self.value["m_imag"])
        if self.value["m_trigCalculated"]:
            text += " (%s at %s degrees)" % (self.value["m_magnitude"], self.value["m_angle"])
        return text


class Quaternion:
    """CQXQuaternion: scalar and vector part."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "%s + (%s, %s, %s)" % tuple(self.value[c] for c in "wxyz")


def printers():
    collection = gdb.printing.RegexpCollectionPrettyPrinter("qx")
    for n in (2, 3, 4):
        collection.add_printer("CQXVector%d" % n, "^CQXVector%d<.*>$" % n, lambda v, n=n: Fixed(v, 1, n))
        collection.add_printer("CQXMatrix%d" % n, "^CQXMatrix%d<.*>$" % n, lambda v, n=n: Fixed(v, n, n))
    collection.add_printer("vectors", "^CQX(BaseVector|VectorN)<.*>$", lambda v: Dynamic(v, False))
    collection.add_printer("matrices", "^CQX(BaseMatrix|MatrixMN|MatrixN)<.*>$", lambda v: Dynamic(v, True))
    collection.add_printer("CQXComplex", "^CQXComplex<.*>$", Complex)
    collection.add_printer("CQXQuaternion", "^CQXQuaternion<.*>$", Quaternion)
    return collection


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
