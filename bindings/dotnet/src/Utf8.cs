using System;
using System.Runtime.InteropServices;
using System.Text;

namespace NerovaZel
{
    internal static class Utf8
    {
        internal static byte[] Bytes(string text, string argument)
        {
            if (text == null)
            {
                throw new ArgumentNullException(argument);
            }

            return Encoding.UTF8.GetBytes(text + "\0");
        }

        internal static string Text(IntPtr text)
        {
            if (text == IntPtr.Zero)
            {
                return null;
            }

            int length = 0;
            while (Marshal.ReadByte(text, length) != 0)
            {
                ++length;
            }

            var bytes = new byte[length];
            Marshal.Copy(text, bytes, 0, length);
            return Encoding.UTF8.GetString(bytes);
        }
    }
}
