import java.io.Externalizable;
import java.io.IOException;
import java.io.ObjectInput;
import java.io.ObjectOutput;

/** A message as its default renderer writes it. */
public class LOGObject implements Externalizable {
  private static final long serialVersionUID = 1;

  String text;

  @Override
  public void readExternal(ObjectInput in) throws IOException {
    text = in.readUTF();
  }

  @Override
  public void writeExternal(ObjectOutput out) throws IOException {
    out.writeUTF(text);
  }
}
