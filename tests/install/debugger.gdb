# gdb -batch -x debugger/qx_gdb.py -x tests/install/debugger.gdb PROGRAM: prints each object by the printers, then by every
# expression of the natvis file.
set confirm off
set breakpoint pending off
break Stop
run
up
print fixed
print square
print vector
print matrix
print complex
print quaternion
python
import re
import xml.etree.ElementTree as tree

def natvis(name, variable):
  def value(expression):
    members = re.sub(r"(?<![\w.])(m_\w+|\b[wxyz]\b)", variable + r".\1", expression)
    return gdb.parse_and_eval(members)
  space = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
  for kind in tree.parse("debugger/qx.natvis").getroot().iter(space + "Type"):
    if kind.get("Name").startswith(name + "<"):
      text = re.sub(r"\{([^}]*)\}", lambda m: str(value(m.group(1))), kind.find(space + "DisplayString").text)
      for items in kind.iter(space + "ArrayItems"):
        size, pointer = value(items.find(space + "Size").text), value(items.find(space + "ValuePointer").text)
        text += ": " + " ".join(str((pointer + i).dereference()) for i in range(int(size)))
      print("natvis " + variable + ": " + text)

for name, variable in [("CQXVector3", "fixed"), ("CQXVectorN", "vector"), ("CQXMatrixMN", "matrix"),
                       ("CQXComplex", "complex"), ("CQXQuaternion", "quaternion")]:
  natvis(name, variable)
end
