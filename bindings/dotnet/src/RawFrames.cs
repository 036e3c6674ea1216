using System;
using System.Collections.Generic;

namespace NerovaZel
{
    /// <summary>Bytes of cameras and files to pixels, and colour frames to planes.</summary>
    public static unsafe partial class RawFrames
    {
        /// <summary>The names of the pixel formats that <see cref="Unpack(string, byte[], long, int)"/> takes: those of the
        /// pixel format naming convention (PFNC) of machine vision, such as Mono12p.</summary>
        public static IReadOnlyList<string> PixelFormats()
        {
            var names = new List<string>();
            while (true)
            {
                IntPtr name;
                Failure.ThrowIfFailed(NativeMethods.nv_imaging_pixel_format_name(names.Count, out name));
                if (name == IntPtr.Zero)
                {
                    return names;
                }

                names.Add(Utf8.Text(name));
            }
        }

        /// <summary>Significant bits of a pixel of a format, 8 to 16.</summary>
        /// <param name="pixelFormat">A name of <see cref="PixelFormats"/>.</param>
        /// <exception cref="PolarizationException">There is no such format.</exception>
        public static int BitDepth(string pixelFormat)
        {
            Describe(pixelFormat, out int significant, out _);
            return significant;
        }

        /// <summary>Bytes of one frame.</summary>
        /// <param name="pixelFormat">A name of <see cref="PixelFormats"/>.</param>
        /// <param name="pixels">Of the frame, at least 1.</param>
        /// <exception cref="PolarizationException">There is no such format.</exception>
        public static long FrameBytes(string pixelFormat, long pixels)
        {
            CheckPixels(pixels);
            Describe(pixelFormat, out _, out int storage);
            return checked((pixels * storage) + 7) / 8;
        }

        /// <summary>Unpacks whole frames that follow one another without padding; each starts at a byte.</summary>
        /// <param name="pixelFormat">A name of <see cref="PixelFormats"/>.</param>
        /// <param name="bytes">Of one frame or more.</param>
        /// <param name="pixels">Of one frame, at least 1.</param>
        /// <param name="threads">At most so many threads unpack.</param>
        /// <returns>The pixels of all frames, one frame after the other.</returns>
        /// <exception cref="ArgumentException">The bytes are not those of whole frames.</exception>
        /// <exception cref="PolarizationException">There is no such format.</exception>
        public static ushort[] Unpack(string pixelFormat, byte[] bytes, long pixels, int threads = 1)
        {
            Check.NotNull(bytes, nameof(bytes));
            var unpacked = new ushort[FrameCount(pixelFormat, bytes.LongLength, pixels) * pixels];
            Unpack(pixelFormat, bytes, pixels, unpacked, threads);
            return unpacked;
        }

        /// <summary>As above, into an array.</summary>
        /// <param name="pixelFormat">A name of <see cref="PixelFormats"/>.</param>
        /// <param name="bytes">Of one frame or more.</param>
        /// <param name="pixels">Of one frame, at least 1.</param>
        /// <param name="unpacked">As many elements as there are pixels in all frames.</param>
        /// <param name="threads">At most so many threads unpack.</param>
        public static void Unpack(string pixelFormat, byte[] bytes, long pixels, ushort[] unpacked, int threads = 1)
        {
            Check.NotNull(bytes, nameof(bytes));
            long frames = FrameCount(pixelFormat, bytes.LongLength, pixels);
            Check.Size(unpacked, frames * pixels, nameof(unpacked));
            fixed (byte* from = bytes)
            fixed (ushort* to = unpacked)
            {
                Unpack(pixelFormat, (IntPtr)from, bytes.LongLength, pixels, (IntPtr)to, threads);
            }
        }

        /// <summary>As above, between addresses.</summary>
        /// <param name="pixelFormat">A name of <see cref="PixelFormats"/>.</param>
        /// <param name="bytes">Address of <paramref name="byteCount"/> bytes, of any alignment.</param>
        /// <param name="byteCount">Of one frame or more.</param>
        /// <param name="pixels">Of one frame, at least 1.</param>
        /// <param name="unpacked">Address of room for 16 bits of each pixel, aligned to 2 bytes.</param>
        /// <param name="threads">At most so many threads unpack.</param>
        public static void Unpack(
            string pixelFormat, IntPtr bytes, long byteCount, long pixels, IntPtr unpacked, int threads = 1)
        {
            Check.NotNull(bytes, nameof(bytes));
            Check.NotNull(unpacked, nameof(unpacked));
            long frames = FrameCount(pixelFormat, byteCount, pixels);
            Failure.ThrowIfFailed(NativeMethods.nv_imaging_unpack(
                Utf8.Bytes(pixelFormat, nameof(pixelFormat)), (void*)bytes, Size(byteCount), Size(pixels), Size(frames),
                (ushort*)unpacked, threads));
        }

        /// <summary>Takes a colour frame apart into ordinary mosaics of half its width and height and of its layout: red, the
        /// green in the rows of red, the green in the rows of blue, and blue.</summary>
        /// <param name="pixels">Width times height.</param>
        /// <param name="width">Columns, a multiple of 4.</param>
        /// <param name="height">Rows, a multiple of 4.</param>
        /// <param name="pattern">The colours of the cells of 2 x 2 pixels at the top left, by rows: RGGB, GRBG, GBRG or
        /// BGGR.</param>
        /// <returns>The four planes.</returns>
        /// <exception cref="ArgumentException">The array has another size.</exception>
        /// <exception cref="PolarizationException">A side is no multiple of 4, or the pattern is unknown.</exception>
        public static ushort[][] SplitColours(ushort[] pixels, int width, int height, string pattern)
        {
            Check.Range(width, 4, int.MaxValue, nameof(width));
            Check.Range(height, 4, int.MaxValue, nameof(height));
            long count = (long)width * height;
            Check.Size(pixels, count, nameof(pixels));
            var planes = new ushort[count];
            fixed (ushort* from = pixels)
            fixed (ushort* to = planes)
            {
                SplitColours((IntPtr)from, width, height, pattern, (IntPtr)to);
            }

            var apart = new ushort[4][];
            for (int plane = 0; plane < 4; ++plane)
            {
                apart[plane] = new ushort[count / 4];
                Array.Copy(planes, plane * (count / 4), apart[plane], 0, count / 4);
            }

            return apart;
        }

        /// <summary>As above, between addresses: the planes follow one another.</summary>
        /// <param name="pixels">Address of width times height pixels of 16 bits, aligned to 2 bytes.</param>
        /// <param name="width">Columns, a multiple of 4.</param>
        /// <param name="height">Rows, a multiple of 4.</param>
        /// <param name="pattern">RGGB, GRBG, GBRG or BGGR.</param>
        /// <param name="planes">Address of room for as many pixels.</param>
        public static void SplitColours(IntPtr pixels, int width, int height, string pattern, IntPtr planes)
        {
            Failure.ThrowIfFailed(NativeMethods.nv_imaging_split_colours(
                (ushort*)pixels, width, height, Utf8.Bytes(pattern, nameof(pattern)), (ushort*)planes));
        }

        internal static UIntPtr Size(long size)
        {
            return checked((UIntPtr)(ulong)size);
        }

        private static void Describe(string pixelFormat, out int significant, out int storage)
        {
            Failure.ThrowIfFailed(NativeMethods.nv_imaging_pixel_format(
                Utf8.Bytes(pixelFormat, nameof(pixelFormat)), out significant, out storage));
        }

        private static void CheckPixels(long pixels)
        {
            if (pixels < 1)
            {
                throw new ArgumentOutOfRangeException(nameof(pixels), pixels, "It must be at least 1.");
            }
        }

        private static long FrameCount(string pixelFormat, long byteCount, long pixels)
        {
            long one = FrameBytes(pixelFormat, pixels);
            if (byteCount < one || byteCount % one != 0)
            {
                throw new ArgumentException(
                    $"There are {byteCount} bytes; a frame of {pixels} pixels of {pixelFormat} takes {one}.", "bytes");
            }

            return byteCount / one;
        }
    }
}
