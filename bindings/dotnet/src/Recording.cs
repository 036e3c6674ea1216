using System;
using System.IO;

namespace NerovaZel
{
    /// <summary>A raw file of frames with the JSON that describes it, such as nerova-polarize record makes: run.raw and
    /// run.raw.json. Used by one thread at a time.</summary>
    public sealed class Recording : IDisposable
    {
        private readonly FileStream file;
        private readonly byte[] bytes;

        /// <summary>Opens a recording.</summary>
        /// <param name="path">Of the raw file; the JSON lies beside it.</param>
        /// <exception cref="PolarizationException">The JSON describes no recording.</exception>
        /// <exception cref="InvalidDataException">The file does not hold the frames.</exception>
        public Recording(string path)
        {
            Check.NotNull(path, nameof(path));
            string about = path + ".json";
            byte[] text = File.ReadAllBytes(about);
            NativeRecording found;
            Failure.ThrowIfFailed(NativeMethods.nv_imaging_read_recording(
                text, RawFrames.Size(text.LongLength), Utf8.Bytes(about, nameof(path)), out found));
            Format = new FrameFormat(
                found.Width, found.Height, found.Layout, found.BitDepth, found.OriginX, found.OriginY);
            PixelFormat = Utf8.Text(found.PixelFormat);
            Colour = Utf8.Text(found.Colour);
            FrameCount = checked((long)found.Frames);
            bytes = new byte[RawFrames.FrameBytes(PixelFormat, Format.PixelCount)];
            file = File.OpenRead(path);
            if (file.Length / bytes.LongLength < FrameCount)
            {
                string sentence = $"{path} holds {file.Length} bytes; {FrameCount} frames take {bytes.LongLength} each.";
                file.Dispose();
                throw new InvalidDataException(sentence);
            }
        }

        /// <summary>What the frames are.</summary>
        public FrameFormat Format { get; }

        /// <summary>A name of <see cref="RawFrames.PixelFormats"/>.</summary>
        public string PixelFormat { get; }

        /// <summary>The pattern of a sensor with colour filters, such as RGGB, see <see cref="RawFrames"/>; null of
        /// others.</summary>
        public string Colour { get; }

        /// <summary>How many frames there are.</summary>
        public long FrameCount { get; }

        /// <summary>Reads and unpacks a frame.</summary>
        /// <param name="index">From 0.</param>
        /// <param name="pixels">Width times height elements.</param>
        public void Read(long index, ushort[] pixels)
        {
            if (index < 0 || index >= FrameCount)
            {
                throw new ArgumentOutOfRangeException(nameof(index), index, $"There are {FrameCount} frames.");
            }

            file.Position = checked(index * bytes.LongLength);
            int done = 0;
            while (done < bytes.Length)
            {
                int read = file.Read(bytes, done, bytes.Length - done);
                if (read == 0)
                {
                    throw new EndOfStreamException(file.Name + " ends within a frame.");
                }

                done += read;
            }

            RawFrames.Unpack(PixelFormat, bytes, Format.PixelCount, pixels);
        }

        /// <summary>Reads and unpacks a frame into a new array.</summary>
        /// <param name="index">From 0.</param>
        public ushort[] Read(long index)
        {
            var pixels = new ushort[Format.PixelCount];
            Read(index, pixels);
            return pixels;
        }

        /// <summary>Closes the file.</summary>
        public void Dispose()
        {
            file.Dispose();
        }
    }
}
