import java.io.ByteArrayInputStream;
import java.io.ObjectInputStream;
import java.net.DatagramPacket;
import java.net.DatagramSocket;
import java.net.InetAddress;

/**
 * Receives records on a free port of this machine, whose number it prints first, and prints for each
 * the logger's name, the length of the message and its first UTF-16 code units in hexadecimal.
 *
 * <p>Usage: RecordReader COUNT
 */
public class RecordReader {
  private static final int SHOWN = 8;

  public static void main(String[] arguments) throws Exception {
    int count = Integer.parseInt(arguments[0]);
    try (DatagramSocket socket = new DatagramSocket(0, InetAddress.getByName("127.0.0.1"))) {
      System.out.printf("%5d\n", socket.getLocalPort());
      DatagramPacket packet = new DatagramPacket(new byte[65536], 65536);
      for (int i = 0; i < count; ++i) {
        socket.receive(packet);
        System.out.println(describe(packet));
        packet.setLength(65536);
      }
    }
  }

  private static String describe(DatagramPacket packet) throws Exception {
    ByteArrayInputStream bytes = new ByteArrayInputStream(packet.getData(), 0, packet.getLength());
    try (ObjectInputStream record = new ObjectInputStream(bytes)) {
      String logger = record.readUTF();
      String message = ((LOGObject) record.readObject()).text;
      StringBuilder line = new StringBuilder(logger + " " + message.length());
      for (int i = 0; i < Math.min(SHOWN, message.length()); ++i) {
        line.append(String.format(" %04x", (int) message.charAt(i)));
      }
      return line + (record.read() == -1 ? "" : " and more");
    }
  }
}
