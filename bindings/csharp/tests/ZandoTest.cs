// The C# binding against the real library, as an engine script would use it: recording, training
// with progress events, files (blocking and in the background), identification of finished and
// running strokes, a two-handed combination, continuous detection in a frame loop on the host's
// clock, and the mapping of return codes to exceptions.
// Arguments: the C header and the wrapper's source, for the check that every flat function is
// declared with its parameters and reached by the wrapper.
using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Text.RegularExpressions;
using System.Threading;
using Zando;

static class ZandoTest
{
    static int failures;
    static readonly Random random = new Random(7);
    static readonly Vector3 head = new Vector3(0, 1.7, 0);
    static readonly Quaternion facing = Quaternion.Identity;
    static readonly string[] shapes = { "circle", "swipe", "zigzag" };

    static void Expect(bool condition, string what)
    {
        if (condition) return;
        ++failures;
        Console.WriteLine("  FAILED: " + what);
    }

    static void ExpectCode(int code, Action action, string what)
    {
        try
        {
            action();
            Expect(false, what + ": no exception, expected " + code);
        }
        catch (ZandoException e)
        {
            Expect(e.Code == code && e.CodeName == ZandoException.NameOf(code) && e.Message.Contains(e.CodeName),
                   what + ": got " + e.Code + " " + e.CodeName + ", expected " + code);
        }
    }

    // A point of shape 0 (circle), 1 (horizontal swipe) or 2 (vertical zigzag) at t in [0, 1].
    static Vector3 ShapePoint(int shape, double t, double size, Vector3 centre, bool mirrored)
    {
        double x, y;
        switch (shape)
        {
            case 0: x = Math.Cos(2 * Math.PI * t); y = Math.Sin(2 * Math.PI * t); break;
            case 1: x = -1 + 2 * t; y = 0.1 * Math.Sin(Math.PI * t); break;
            default: x = 0.3 * Math.Sin(6 * Math.PI * t); y = 1 - 2 * t; break;
        }
        double noise = 0.003;
        x = centre.X + size * x + noise * (2 * random.NextDouble() - 1);
        return new Vector3(mirrored ? -x : x, centre.Y + size * y + noise * (2 * random.NextDouble() - 1),
                           centre.Z + noise * (2 * random.NextDouble() - 1));
    }

    // One performance, fed point by point as a frame loop would.
    static void Perform(Action<Vector3> feed, int shape, bool mirrored = false)
    {
        double size = 0.25 * (1 + 0.15 * (2 * random.NextDouble() - 1));
        Vector3 centre = new Vector3(0.2 + 0.05 * random.NextDouble(), 1.4 + 0.05 * random.NextDouble(), 0.45);
        for (int i = 0; i < 50; ++i) feed(ShapePoint(shape, i / 49.0, size, centre, mirrored));
    }

    static bool WaitFor(Func<bool> condition, int seconds)
    {
        DateTime end = DateTime.UtcNow.AddSeconds(seconds);
        while (!condition())
        {
            if (DateTime.UtcNow > end) return false;
            Thread.Sleep(10);
        }
        return true;
    }

    static string TempPath(string name)
    {
        return Path.Combine(Path.GetTempPath(), "zando-csharp-" + System.Diagnostics.Process.GetCurrentProcess().Id + "-" + name);
    }

    static void RecogniserEndToEnd()
    {
        string file = TempPath("set.dat"), copy = TempPath("copy.dat");
        using (var recogniser = new GestureRecognition())
        {
            for (int g = 0; g < shapes.Length; ++g)
            {
                Expect(recogniser.CreateGesture(shapes[g], g == 1 ? new byte[] { 1, 2, 3 } : null) == g, "gesture index");
                for (int s = 0; s < 10; ++s)
                {
                    recogniser.StartStroke(head, facing, g);
                    Perform(p => recogniser.ContdStroke(p, facing), g);
                    Expect(recogniser.EndStroke() == g, "a recorded stroke answers its gesture");
                }
            }
            recogniser.Metadata = new byte[] { 42 };
            Expect(recogniser.GetGestureNumberOfSamples(2) == 10 &&
                   recogniser.GetGestureSampleStroke(2, 9).HandPositions.Length == 50, "samples kept whole");

            var updates = new List<double>();
            double finalScore = -1;
            recogniser.TrainingUpdated += score => { lock (updates) updates.Add(score); };
            recogniser.TrainingFinished += score => finalScore = score;
            recogniser.MaxTrainingTime = 3;
            recogniser.StartTraining();
            ExpectCode(-8, () => recogniser.CreateGesture("late"), "creating while training");
            Expect(WaitFor(() => finalScore >= 0 && !recogniser.IsTraining, 60), "training finishes");
            lock (updates) Expect(updates.Count > 0 && updates.All(s => s >= 0 && s <= 1), "progress reported");
            Expect(finalScore > 0.8 && recogniser.RecognitionScore == finalScore, "trained score " + finalScore);
            Expect(recogniser.LastCallbackError == null, "handlers ran cleanly");

            recogniser.SaveToFile(file);
            int savedCode = 1;
            recogniser.SavingFinished += code => savedCode = code;
            recogniser.SaveToFileAsync(copy);
            Expect(WaitFor(() => savedCode <= 0 && !recogniser.IsSaving, 30) && savedCode == 0, "background save");
        }

        using (var loaded = new GestureRecognition())
        {
            int loadedCode = 1, lastPercent = 0;
            loaded.LoadingProgress += percent => lastPercent = Math.Max(lastPercent, percent);
            loaded.LoadingFinished += code => loadedCode = code;
            loaded.LoadFromBufferAsync(File.ReadAllBytes(copy));
            Expect(WaitFor(() => loadedCode <= 0 && !loaded.IsLoading, 30) && loadedCode == 0, "background load");
            Expect(lastPercent > 0, "load progress reported");
            loaded.LoadFromFile(file);
            Expect(loaded.NumberOfGestures == 3 && loaded.GetGestureName(2) == "zigzag", "names survive the file");
            Expect(loaded.GetGestureMetadata(1).SequenceEqual(new byte[] { 1, 2, 3 }) && loaded.GetGestureMetadata(0) == null &&
                   loaded.Metadata.SequenceEqual(new byte[] { 42 }), "metadata survives the file");

            int correct = 0;
            for (int g = 0; g < shapes.Length; ++g)
            {
                for (int trial = 0; trial < 4; ++trial)
                {
                    loaded.StartStroke(head, facing);
                    Perform(p => loaded.ContdStroke(p, facing), g);
                    double[] probabilities, similarities;
                    StrokeInfo where;
                    int identified = loaded.EndStrokeAndGetAllProbabilitiesAndSimilarities(out probabilities, out similarities, out where);
                    Expect(probabilities.Length == 3 && similarities.Length == 3 && where.Scale > 0, "outputs filled");
                    if (identified == g && Array.IndexOf(probabilities, probabilities.Max()) == g) ++correct;
                }
            }
            Expect(correct >= 11, "identified " + correct + " of 12 strokes");

            // The running motion, frame by frame, with the allocation-free forms.
            double[] p3 = new double[3], s3 = new double[3];
            int count = 0, last = -1;
            loaded.StartStroke(head, facing);
            Perform(p =>
            {
                Expect(loaded.TryContdStroke(p, facing) == 0, "a frame's point");
                last = loaded.TryContdIdentifyAndGetAllProbabilitiesAndSimilarities(head, facing, p3, s3, out count);
            }, 0);
            Expect(last == 0 && count == 3, "continuous identification sees the circle (" + last + ")");
            loaded.CancelStroke();
        }
        File.Delete(file);
        File.Delete(copy);
    }

    static void TwoHandedCombination()
    {
        string file = TempPath("hands.dat");
        using (var hands = new GestureCombinations(2))
        {
            for (int part = 0; part < 2; ++part)
            {
                for (int g = 0; g < 2; ++g)
                {
                    hands.CreateGesture(part, shapes[g]);
                    for (int s = 0; s < 8; ++s)
                    {
                        hands.StartStroke(part, head, facing, g);
                        Perform(p => hands.ContdStroke(part, p), g, part == 0);
                        hands.EndStroke(part);
                    }
                }
            }
            int both = hands.CreateGestureCombination("both circles");
            int mixed = hands.CreateGestureCombination("circle and swipe");
            hands.SetCombinationPartGesture(both, 0, 0);
            hands.SetCombinationPartGesture(both, 1, 0);
            hands.SetCombinationPartGesture(mixed, 0, 0);
            hands.SetCombinationPartGesture(mixed, 1, 1);
            hands.SetGestureCombinationMetadata(mixed, new byte[] { 9 });

            bool finished = false;
            hands.TrainingFinished += score => finished = true;
            hands.MaxTrainingTime = 2;
            hands.SetMaxTrainingThreads(2);
            hands.StartTraining();
            Expect(WaitFor(() => finished && !hands.IsTraining, 60), "combination training finishes");
            Expect(hands.RecognitionScore > 0.9, "combination score " + hands.RecognitionScore);
            hands.SaveToFile(file);
        }

        using (var hands = new GestureCombinations(1))
        {
            hands.LoadFromFile(file);
            Expect(hands.NumberOfParts == 2 && hands.GetGestureCombinationName(1) == "circle and swipe" &&
                   hands.GetCombinationPartGesture(1, 1) == 1 && hands.GetGestureCombinationMetadata(1)[0] == 9,
                   "combinations survive the file");
            for (int part = 0; part < 2; ++part)
            {
                hands.StartStroke(part, head, facing);
                int shape = part;  // left hand a circle, right hand a swipe
                Perform(p => hands.ContdStroke(part, p, facing), shape, part == 0);
                hands.EndStroke(part);
            }
            double probability, similarity;
            double[] partProbabilities, partSimilarities;
            int identified = hands.IdentifyGestureCombination(out probability, out similarity, out partProbabilities, out partSimilarities);
            Expect(identified == 1 && partProbabilities.Length == 2 && probability > 0, "identified combination " + identified);
            // Each part's result is used once.
            ExpectCode(-1, () => hands.IdentifyGestureCombination(), "a second identification");
        }
        File.Delete(file);
    }

    // A host's frame loop at 60 fps on its own clock, in the enhanced mode right after recording:
    // the hand rests for a second, performs a zigzag and rests again. Detection must answer on one
    // frame only, with the zigzag, and raise the event once with the same answer.
    static void ContinuousDetection()
    {
        const double frame = 1.0 / 60;
        double now = 100.0;  // the host's clock, from its own origin
        int[] recorded = { 0, 2 };  // a circle and a zigzag
        using (var recogniser = new GestureRecognition())
        {
            recogniser.EnhancedRecognition = true;
            int gesture;
            double confidence;
            ExpectCode(-12, () => recogniser.ContdDetect(head, facing, out gesture, out confidence), "detecting without a stroke");
            Expect(recogniser.TryContdDetect(new double[] { 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 1.7, 0, 1 },
                                             out gesture, out confidence) == -12 && gesture == -1,
                   "the matrix form's Try returns the code");
            Expect(recogniser.DetectionSensitivity == 0.5, "default sensitivity " + recogniser.DetectionSensitivity);
            ExpectCode(-18, () => recogniser.DetectionSensitivity = 1.5, "a sensitivity above 1");

            // Samples recorded on the same clock, so that they last as long as performances do.
            for (int k = 0; k < recorded.Length; ++k)
            {
                recogniser.CreateGesture(shapes[recorded[k]]);
                for (int s = 0; s < 5; ++s)
                {
                    recogniser.SetHostTime(now);
                    recogniser.StartStroke(head, facing, k);
                    Perform(p =>
                    {
                        now += frame;
                        recogniser.SetHostTime(now);
                        recogniser.ContdStroke(p, facing);
                    }, recorded[k]);
                    recogniser.EndStroke();
                    now += 1.0;
                }
            }

            var performance = new List<Vector3>();
            Perform(performance.Add, recorded[1]);
            var detected = new List<int>();
            var raised = new List<KeyValuePair<int, double>>();
            double lastConfidence = -1;
            recogniser.GestureDetected += (g, c) => raised.Add(new KeyValuePair<int, double>(g, c));
            Action<Vector3> playFrame = hand =>
            {
                now += frame;
                recogniser.SetHostTime(now);
                recogniser.ContdStroke(hand, facing);
                int code = recogniser.TryContdDetect(head, facing, out gesture, out confidence);
                Expect(code == 0 || code == 1, "a frame's detection code " + code);
                if (code != 1) return;
                detected.Add(gesture);
                lastConfidence = confidence;
            };
            Action<Vector3> rest = at =>
            {
                for (int f = 0; f < 60; ++f)
                {
                    double tremor = 0.001;
                    playFrame(new Vector3(at.X + tremor * (2 * random.NextDouble() - 1), at.Y + tremor * (2 * random.NextDouble() - 1),
                                          at.Z + tremor * (2 * random.NextDouble() - 1)));
                }
            };
            recogniser.SetHostTime(now);
            recogniser.StartStroke(head, facing);
            Expect(recogniser.TryContdDetect(new Vector3(double.NaN, 0, 0), facing, out gesture, out confidence) == -18,
                   "a non-finite head pose is refused");
            rest(performance[0]);
            Expect(detected.Count == 0, "nothing detected while the hand rests");
            performance.ForEach(playFrame);
            rest(performance[performance.Count - 1]);
            Expect(detected.Count == 1 && detected[0] == 1, "detected " + string.Join(", ", detected) + ", expected the zigzag once");
            Expect(lastConfidence > 0 && lastConfidence <= 1, "confidence " + lastConfidence);
            Expect(raised.Count == 1 && raised[0].Key == 1 && raised[0].Value == lastConfidence, "the event raised once with the answer");
            recogniser.CancelStroke();
        }

        using (var hands = new GestureCombinations(2))
        {
            hands.CreateGestureCombination("both still");
            int combination;
            double confidence;
            ExpectCode(-12, () => hands.ContdDetect(head, facing, out combination, out confidence), "a combination without strokes");
            hands.DetectionSensitivity = 0.8;
            Expect(hands.DetectionSensitivity == 0.8, "sensitivity of the parts");
            ExpectCode(-18, () => hands.DetectionSensitivity = -0.1, "a sensitivity below 0");
        }
    }

    static void ErrorsAndLifetime()
    {
        var recogniser = new GestureRecognition();
        StrokeInfo info;
        ExpectCode(-12, () => recogniser.EndStroke(), "ending without a stroke");
        Expect(recogniser.TryEndStroke(out info) == -12, "the Try form returns the code");
        ExpectCode(-2, () => recogniser.GetGestureName(0), "a gesture that is not there");
        ExpectCode(-3, () => recogniser.LoadFromFile(TempPath("missing/none.dat")), "a missing file");
        ExpectCode(-4, () => recogniser.LoadFromBuffer(new byte[] { 1, 2, 3, 4 }), "a damaged file");
        ExpectCode(-18, () => recogniser.CreateGesture(null), "a null name");
        recogniser.StartStroke(head, facing);
        Expect(recogniser.TryContdStroke(new Vector3(double.NaN, 0, 0)) == -18, "a non-finite point is refused");
        Expect(recogniser.IsStrokeStarted, "the stroke runs on");
        try
        {
            recogniser.ContdStroke(new double[15]);
            Expect(false, "a short matrix reaches the library");
        }
        catch (ArgumentException) { }
        recogniser.EnhancedRecognition = true;
        Expect(recogniser.EnhancedRecognition, "enhanced switch");
        Expect(ZandoException.NameOf(-5) == "Unknown" && ZandoException.NameOf(-19) == "StreamError", "code names");
        recogniser.Dispose();
        recogniser.Dispose();
        try
        {
            recogniser.CancelStroke();
            Expect(false, "a disposed object is used");
        }
        catch (ObjectDisposedException) { }

        using (var hands = new GestureCombinations(2))
        {
            ExpectCode(-2, () => hands.StartStroke(5, head, facing), "a part that is not there");
            hands.SetPartEnabled(0, false);
            hands.SetPartEnabled(1, false);
            ExpectCode(-9, () => hands.StartTraining(), "training without an enabled part");
        }
        // An import shares the other object's metadata: it must outlive that object.
        using (var into = new GestureRecognition())
        {
            using (var from = new GestureRecognition())
            {
                from.CreateGesture("shared", new byte[] { 5, 6 });
                into.ImportGestures(from);
            }
            Expect(into.GetGestureMetadata(0).SequenceEqual(new byte[] { 5, 6 }), "imported metadata outlives its first owner");
        }
        // Forgotten objects are released by their finalizers.
        for (int i = 0; i < 100; ++i) new GestureRecognition().CreateGesture("g", new byte[16]);
        GC.Collect();
        GC.WaitForPendingFinalizers();
        Expect(GestureRecognition.Version.StartsWith("Zando") && GestureRecognition.Version == GestureCombinations.Version,
               "version text");
    }

    // Every flat function of the header has a declaration with as many parameters, and the
    // classes use all but the few whose work another function does.
    static void FlatFaceCovered(string headerPath, string wrapperPath)
    {
        var unused = new HashSet<string>
        {
            "GestureRecognition_getVersionString", "GestureCombinations_getVersionString",  // the copy form reads the text
            "GestureRecognition_getGestureName", "GestureCombinations_getGestureName",      // likewise
            "GestureCombinations_getGestureCombinationName",
            "GestureRecognition_setDebugCallbackFunction", "GestureRecognition_setDebugCallbackMetadata",  // never called
            "GestureRecognition_getTrainingUpdateCallbackMetadata",  // the wrapper's own context
            "GestureRecognition_getTrainingFinishCallbackMetadata",
            "GestureRecognition_defaultMetadataCreatorFunction",  // as createDefaultMetadata
            "GestureCombinations_getMaxTrainingThreads",  // answers the training time
        };
        string header = File.ReadAllText(headerPath);
        string wrapper = File.ReadAllText(wrapperPath);
        var declared = typeof(Native).GetMethods(BindingFlags.Public | BindingFlags.Static).ToDictionary(m => m.Name);
        var functions = Regex.Matches(header, @"^ZANDO_API [^(]*?\b(Gesture(?:Recognition|Combinations)_\w+)\(([^;]*)\);",
                                      RegexOptions.Multiline);
        Expect(functions.Count > 200 && functions.Count == declared.Count,
               functions.Count + " flat functions, " + declared.Count + " declared");
        foreach (Match function in functions)
        {
            string name = function.Groups[1].Value, parameters = function.Groups[2].Value.Trim();
            int count = parameters == "void" ? 0 : parameters.Split(',').Length;
            MethodInfo method;
            Expect(declared.TryGetValue(name, out method) && method.GetParameters().Length == count,
                   name + " declared with " + count + " parameters");
            bool used = wrapper.Contains("Native." + name + "(");
            Expect(used != unused.Contains(name), name + (used ? " is used" : " is not used by the classes"));
        }
    }

    static int Main(string[] args)
    {
        var scenarios = new Dictionary<string, Action>
        {
            { "recogniser end to end", RecogniserEndToEnd },
            { "two-handed combination", TwoHandedCombination },
            { "continuous detection", ContinuousDetection },
            { "errors and lifetime", ErrorsAndLifetime },
            { "flat face covered", () => FlatFaceCovered(args[0], args[1]) },
        };
        foreach (var scenario in scenarios)
        {
            int before = failures;
            try
            {
                scenario.Value();
            }
            catch (Exception e)
            {
                ++failures;
                Console.WriteLine("  FAILED with " + e);
            }
            Console.WriteLine((failures == before ? "ok   " : "FAIL ") + scenario.Key);
        }
        return failures == 0 ? 0 : 1;
    }
}
