<?php
// The board: the form that pins a new note, then the notes, newest first.
// Its settings come from config.ini beside it, written by the installer.

$settings = parse_ini_file(__DIR__ . '/config.ini', true);
if ($settings === false || !isset($settings['board'])) {
    http_response_code(500);
    exit('This board is not set up yet: config.ini is missing.');
}
$board = $settings['board'];

function h($text)
{
    return htmlspecialchars((string) $text, ENT_QUOTES, 'UTF-8');
}

// Every note is a text file in the notes folder; held notes wait in held/.
$notes = glob(rtrim($board['data_dir'], '/') . '/*.txt') ?: [];
usort($notes, function ($a, $b) {
    return filemtime($b) <=> filemtime($a);
});
$posted = isset($_GET['posted']);
?>
<!DOCTYPE html>
<html lang="en">
<head>
  <meta charset="utf-8">
  <title><?= h($board['title']) ?></title>
  <link rel="stylesheet" href="style.css">
</head>
<body>
  <header>
    <img src="images/logo.svg" alt="" width="48" height="48">
    <h1><?= h($board['title']) ?></h1>
  </header>
  <main>
    <form method="post" action="<?= h($board['cgi_url']) ?>">
      <label for="note">Pin a note</label>
      <textarea id="note" name="note" rows="4" maxlength="2000" required></textarea>
      <button type="submit">Pin it</button>
<?php if ($posted && !empty($board['moderate'])): ?>
      <p class="hint">Thank you. Your note will show once a moderator has approved it.</p>
<?php elseif (!empty($board['moderate'])): ?>
      <p class="hint">New notes show once a moderator has approved them.</p>
<?php endif; ?>
    </form>
    <section class="notes">
<?php foreach ($notes as $note): ?>
      <article class="note">
        <img class="pin" src="images/pin.svg" alt="" width="16" height="16">
        <p><?= nl2br(h(file_get_contents($note))) ?></p>
        <time><?= h(date('j M Y, H:i', filemtime($note))) ?></time>
      </article>
<?php endforeach; ?>
<?php if (!$notes): ?>
      <p class="hint">No notes yet.</p>
<?php endif; ?>
    </section>
  </main>
  <footer>
    <a href="about.html">About this board</a> &middot; version <?= h($board['version']) ?>
  </footer>
</body>
</html>
